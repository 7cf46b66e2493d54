#include "sipobject/headers/KxSipCSeqHeader.h"

#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipCSeqHeader::sToken{"CSeq"};

static const KxSipCSeqHeader::Registration s_registration;

KxSipFault KxSipCSeqHeader::parseValue(KxSipLine& line) {
    m_seqNumber = KxStreamTokenizer::sGetUnsigned(line);
    m_method = KxString(line.token(sDelimeters));
    if (m_method.empty()) {
        return KxSipFault("Invalid CSeq header");
    }
    return {};
}

void KxSipCSeqHeader::serializeValue(KxOutputStream& out) const {
    out << m_seqNumber << ' ' << m_method;
}
