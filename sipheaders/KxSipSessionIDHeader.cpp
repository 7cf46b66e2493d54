#include "sipheaders/KxSipSessionIDHeader.h"

#include "util/UUID.h"

#include <algorithm>

constinit const KxConstString KxSipSessionIDHeader::sToken{"Session-ID"};

const HeaderID KxSipSessionIDHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);

KxString KxSipSessionIDHeader::sNewUUID() {
    char text[UUID::kTextLength + 1];
    UUID::uuid_create_string(text);
    return KxString(std::string_view(text, std::remove(text, text + UUID::kTextLength, '-')));
}

bool KxSipSessionIDHeader::sIsUUID(std::string_view text) {
    return text.size() == 32 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

KxString KxSipSessionIDHeader::sChecked(KxSipText uuid) {
    if (!sIsUUID(uuid.view())) {
        KxSipFault("Invalid Session-ID header").raise();
    }
    return uuid.line().lower();
}

KxSipFault KxSipSessionIDHeader::parseValue(KxSipLine& line) {
    const std::string_view local = line.token(sDelimeters);
    if (!sIsUUID(local)) {
        return KxSipFault("Invalid Session-ID header");
    }
    const KxSipFault fault = parseParameters(line);
    if (!fault) {
        m_local = KxString(local);
    }
    return fault;
}

void KxSipSessionIDHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_local);
    serializeParameters(out);
}
