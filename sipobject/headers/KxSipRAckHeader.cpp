#include "sipobject/headers/KxSipRAckHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipNumberText.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipRAckHeader::sToken{"RAck"};

static const KxSipRAckHeader::Registration s_registration;

KxSipFault KxSipRAckHeader::parseValue(KxSipLine& line) {
    constexpr const char* kInvalid = "Invalid RAck header";
    for (std::uint32_t* const number : {&m_responseNumber, &m_seqNumber}) {
        if (!KxSipGrammar::sChecksNumbers()) {
            *number = KxStreamTokenizer::sGetUnsigned(line);
        } else if (const KxSipFault fault = KxSipNumberText::sRead(line, UINT32_MAX, *number, kInvalid)) {
            return fault;
        }
    }
    m_method = KxString(line.token(sDelimeters));
    if (m_method.empty()) {
        return KxSipFault(kInvalid);
    }
    return {};
}

void KxSipRAckHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_responseNumber, ' ', m_seqNumber, ' ', m_method);
}
