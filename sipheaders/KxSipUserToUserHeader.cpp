#include "sipheaders/KxSipUserToUserHeader.h"

#include "util/KxHexEncoding.h"

constinit const KxConstString KxSipUserToUserHeader::sToken{"User-to-User"};

const HeaderID KxSipUserToUserHeader::kHeaderID = KxSipHeader::sNewHeaderID();

KxHandle<KxSipUserToUserHeader> KxSipUserToUserHeader::sOfBytes(std::string_view bytes) {
    const KxHandle<KxSipUserToUserHeader> header = KxMake<KxSipUserToUserHeader>(KxSipText("0"));
    header->setBytes(bytes);
    return header;
}

bool KxSipUserToUserHeader::isHex() const {
    const KxString encoding = getEncoding();
    return encoding.isNil() || encoding.equalsNoCase("hex");
}

std::optional<std::string> KxSipUserToUserHeader::getBytes() const {
    const KxString data = getData();
    const std::string_view digits = data.view();
    if (!isHex() || digits.size() % 2 != 0 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos) {
        return std::nullopt;
    }
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        bytes += KxHexEncoding::fromHex(digits[at], digits[at + 1]);
    }
    return bytes;
}

void KxSipUserToUserHeader::setBytes(std::string_view bytes) {
    std::string digits(2 * bytes.size(), '\0');
    KxHexEncoding::toHex(bytes, digits.data());
    KxString data = KxSipParameterValue::sTokenOrQuoted(digits);
    setEncoding("hex");
    m_data = std::move(data);
}

KxSipFault KxSipUserToUserHeader::parseValue(KxSipLine& line) {
    const std::string_view data = KxSipParameterValue::sTake(line);
    if (data.empty()) {
        return KxSipFault("Invalid User-to-User header");
    }
    const KxSipFault fault = parseParameters(line);
    if (!fault) {
        m_data = KxString(data);
    }
    return fault;
}

void KxSipUserToUserHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_data);
    serializeParameters(out);
}
