#include "sipobject/headers/KxSipMIMEVersionHeader.h"

#include "util/KxOutputStream.h"

constinit const KxConstString KxSipMIMEVersionHeader::sToken{"MIME-Version"};

static const KxSipMIMEVersionHeader::Registration s_registration;

void KxSipMIMEVersionHeader::parseValue(KxInputStream& in) {
    constexpr const char* kInvalid = "Invalid MIME-Version header";
    expectDigit(in, kInvalid);
    m_high = KxStreamTokenizer::sGetUnsigned(in);
    if (KxStreamTokenizer::sDiscardWhite(in) != '.') {
        KxSipParseError::sThrow(kInvalid);
    }
    in.read();
    expectDigit(in, kInvalid);
    m_low = KxStreamTokenizer::sGetUnsigned(in);
}

void KxSipMIMEVersionHeader::serializeValue(KxOutputStream& out) const {
    out << m_high << '.' << m_low;
}
