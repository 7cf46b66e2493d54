#include "sipobject/KxSipHost.h"

#include "util/KxCharSet.h"
#include "util/KxInetAddress.h"

#include <algorithm>
#include <string>

namespace {

constexpr KxCharSet kInName("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._");
constexpr KxCharSet kInIPv6("abcdefABCDEF0123456789:.");

/** Reads an address. The grammar of RFC 3261 had a third colon before an IPv4 part after "::", which RFC 5954 removed;
    it is read as two. [RFC 5118 4.10] */
bool readAddress(std::string_view text, KxInetAddress& address) {
    const std::size_t three = text.find(":::");
    if (three == std::string_view::npos || text.find('.', three) == std::string_view::npos) {
        return address.initFromAddress(text);
    }
    return address.initFromAddress(std::string(text).erase(three, 1));
}

/** Brackets and zones, which KxInetAddress allows, are refused. */
bool isIPv6Address(std::string_view text) {
    KxInetAddress address;
    return std::all_of(text.begin(), text.end(), [](char c) { return kInIPv6.contains(c); }) &&
           readAddress(text, address) && address.isIPv6();
}

} // namespace

KxSipHost::KxSipHost(std::string_view written) {
    if (written.size() > 2 && written.front() == '[' && written.back() == ']') {
        m_text = written.substr(1, written.size() - 2);
        m_kind = isIPv6Address(m_text) ? Kind::IPv6 : Kind::Invalid;
    } else {
        m_text = written;
        m_kind = sIsName(written) ? Kind::Name : Kind::Invalid;
    }
}

KxSipHost KxSipHost::sGiven(std::string_view text) {
    return isIPv6Address(text) ? KxSipHost(Kind::IPv6, text) : KxSipHost(text);
}

bool KxSipHost::sIsName(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return kInName.contains(c); });
}

bool KxSipHost::sAreEqual(std::string_view one, std::string_view other) {
    KxInetAddress first;
    KxInetAddress second;
    return KxAscii::equalsNoCase(one, other) ||
           (readAddress(one, first) && readAddress(other, second) && first == second);
}
