#include "sipobject/headers/KxSipRAckHeader.h"

#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipRAckHeader::sToken{"RAck"};

static const KxSipRAckHeader::Registration s_registration;

KxSipFault KxSipRAckHeader::parseValue(KxSipLine& line) {
    m_responseNumber = KxStreamTokenizer::sGetUnsigned(line);
    m_seqNumber = KxStreamTokenizer::sGetUnsigned(line);
    m_method = KxString(line.token(sDelimeters));
    if (m_method.empty()) {
        return KxSipFault("Invalid RAck header");
    }
    return {};
}

void KxSipRAckHeader::serializeValue(KxOutputStream& out) const {
    out << m_responseNumber << ' ' << m_seqNumber << ' ' << m_method;
}
