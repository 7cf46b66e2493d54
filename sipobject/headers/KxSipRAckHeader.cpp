#include "sipobject/headers/KxSipRAckHeader.h"

#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipRAckHeader::sToken{"RAck"};

static const KxSipRAckHeader::Registration s_registration;

KxSipFault KxSipRAckHeader::parseValue(KxInputStream& in) {
    m_responseNumber = KxStreamTokenizer::sGetUnsigned(in);
    m_seqNumber = KxStreamTokenizer::sGetUnsigned(in);
    KxScannedText scanned;
    m_method = KxString(scanned.token(in, sDelimeters));
    if (m_method.empty()) {
        return KxSipFault("Invalid RAck header");
    }
    return {};
}

void KxSipRAckHeader::serializeValue(KxOutputStream& out) const {
    out << m_responseNumber << ' ' << m_seqNumber << ' ' << m_method;
}
