#include "sipobject/headers/KxSipCSeqHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipNumberText.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipCSeqHeader::sToken{"CSeq"};

static const KxSipCSeqHeader::Registration s_registration;

KxSipFault KxSipCSeqHeader::parseValue(KxSipLine& line) {
    constexpr std::uint32_t kMost = 0x7fffffff; // RFC 3261 8.1.1.5
    if (!KxSipGrammar::sChecksNumbers()) {
        m_seqNumber = KxStreamTokenizer::sGetUnsigned(line);
    } else if (const KxSipFault fault = KxSipNumberText::sRead(line, kMost, m_seqNumber, "Invalid CSeq header")) {
        return fault;
    }
    m_method = KxString(line.token(sDelimeters));
    if (m_method.empty()) {
        return KxSipFault("Invalid CSeq header");
    }
    return {};
}

void KxSipCSeqHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_seqNumber, ' ', m_method);
}
