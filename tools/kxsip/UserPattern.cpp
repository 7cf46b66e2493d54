#include "tools/kxsip/UserPattern.h"

#include "sipheaders/KxSipPAssertedIdentityHeader.h"
#include "sipobject/address/KxTelURL.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipRequest.h"

#include <algorithm>
#include <charconv>

namespace {

/** Returns the text without its escapes. */
std::string decoded(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        unsigned code = 0;
        const char* const end = text.data() + std::min<std::size_t>(text.size(), 3);
        const bool isEscape = text.front() == '%' && text.size() >= 3 && text[1] != '-' &&
                              std::from_chars(text.data() + 1, end, code, 16).ptr == end;
        result += isEscape ? static_cast<char>(code) : text.front();
        text.remove_prefix(isEscape ? 3 : 1);
    }
    return result;
}

std::string withoutSeparators(std::string text) {
    std::erase_if(text, [](char c) { return std::string_view("-.()").find(c) != std::string_view::npos; });
    return text;
}

} // namespace

UserPattern::UserPattern(const std::string& name) : m_name(decoded(name)), m_number(withoutSeparators(m_name)) {}

bool UserPattern::matches(const KxSipMessage& message) const {
    const auto* const request = message.as<KxSipRequest>();
    const auto isIn = [this](const auto& headers) {
        return std::any_of(headers.begin(), headers.end(), [this](const auto& header) {
            return !header.getNameAddress().isNil() && isOf(header.getNameAddress()->getURI());
        });
    };
    return isIn(message.values<KxSipFromHeader>()) || isIn(message.values<KxSipToHeader>()) ||
           isIn(message.values<KxSipPAssertedIdentityHeader>()) || (request != nullptr && isOf(request->getURI()));
}

bool UserPattern::isOf(const KxHandle<KxURI>& uri) const {
    if (uri.isNil()) {
        return false;
    }
    if (uri->isSipURL()) {
        const KxString& user = static_cast<const KxSipURL&>(*uri).getUser();
        return user == m_name || (user.indexOf("%") >= 0 && decoded(user) == m_name);
    }
    const auto* const tel = uri->as<KxTelURL>();
    return tel != nullptr && tel->getPhoneNumber() != nullptr && withoutSeparators(tel->getPhoneNumber()) == m_number;
}
