#include "sipobject/headers/KxSipCallIdHeader.h"

#include "util/KxOutputStream.h"

namespace {

constexpr KxCharSet kWhite(" \t\r\n");

} // namespace

constinit const KxConstString KxSipCallIdHeader::sToken{"Call-ID"};
constinit const KxConstString KxSipCallIdHeader::sCompactToken{"i"};

static const KxSipCallIdHeader::Registration s_registration;

KxSipFault KxSipCallIdHeader::parseValue(KxSipLine& line) {
    const std::string_view callId = KxAscii::trimEnd(line.token(kWhite));
    if (callId.empty()) {
        return KxSipFault("Invalid Call-ID header");
    }
    m_callId = KxString(callId);
    return {};
}

void KxSipCallIdHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_callId);
}
