#include "sipobject/headers/KxSipCSeqHeader.h"

#include "sipobject/KxSipParseError.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipCSeqHeader::sToken{"CSeq"};

static const KxSipCSeqHeader::Registration s_registration;

void KxSipCSeqHeader::parseValue(KxInputStream& in) {
    m_seqNumber = KxStreamTokenizer::sGetUnsigned(in);
    KxScannedText scanned;
    m_method = KxString(scanned.token(in, sDelimeters));
    if (m_method.empty()) {
        KxSipParseError::sThrow("Invalid CSeq header");
    }
}

void KxSipCSeqHeader::serializeValue(KxOutputStream& out) const {
    out << m_seqNumber << ' ' << m_method;
}
