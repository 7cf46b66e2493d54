#include "sipobject/headers/KxSipMIMEVersionHeader.h"

#include "util/KxOutputStream.h"

constinit const KxConstString KxSipMIMEVersionHeader::sToken{"MIME-Version"};

static const KxSipMIMEVersionHeader::Registration s_registration;

KxSipFault KxSipMIMEVersionHeader::parseValue(KxInputStream& in) {
    constexpr const char* kInvalid = "Invalid MIME-Version header";
    if (const KxSipFault fault = expectDigit(in, kInvalid)) {
        return fault;
    }
    m_high = KxStreamTokenizer::sGetUnsigned(in);
    if (KxStreamTokenizer::sDiscardWhite(in) != '.') {
        return KxSipFault(kInvalid);
    }
    in.read();
    if (const KxSipFault fault = expectDigit(in, kInvalid)) {
        return fault;
    }
    m_low = KxStreamTokenizer::sGetUnsigned(in);
    return {};
}

void KxSipMIMEVersionHeader::serializeValue(KxOutputStream& out) const {
    out << m_high << '.' << m_low;
}
