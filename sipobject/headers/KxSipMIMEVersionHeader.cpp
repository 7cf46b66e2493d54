#include "sipobject/headers/KxSipMIMEVersionHeader.h"

#include "util/KxOutputStream.h"

constinit const KxConstString KxSipMIMEVersionHeader::sToken{"MIME-Version"};

static const KxSipMIMEVersionHeader::Registration s_registration;

KxSipFault KxSipMIMEVersionHeader::parseValue(KxSipLine& line) {
    constexpr const char* kInvalid = "Invalid MIME-Version header";
    if (const KxSipFault fault = expectDigit(line, kInvalid)) {
        return fault;
    }
    m_high = KxStreamTokenizer::sGetUnsigned(line);
    if (KxStreamTokenizer::sDiscardWhite(line) != '.') {
        return KxSipFault(kInvalid);
    }
    line.read();
    if (const KxSipFault fault = expectDigit(line, kInvalid)) {
        return fault;
    }
    m_low = KxStreamTokenizer::sGetUnsigned(line);
    return {};
}

void KxSipMIMEVersionHeader::serializeValue(KxOutputStream& out) const {
    out << m_high << '.' << m_low;
}
