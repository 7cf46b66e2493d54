#include "sipobject/KxSipHost.h"

#include "util/KxCharSet.h"
#include "util/KxInetAddress.h"

#include <algorithm>

namespace {

constexpr KxCharSet kInName("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._");
constexpr KxCharSet kInIPv6("abcdefABCDEF0123456789:.");

/** Brackets and zones, which KxInetAddress allows, are refused. */
bool isIPv6Address(std::string_view text) {
    KxInetAddress address;
    return std::all_of(text.begin(), text.end(), [](char c) { return kInIPv6.contains(c); }) &&
           address.initFromAddress(text) && address.isIPv6();
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
           (first.initFromAddress(one) && second.initFromAddress(other) && first == second);
}
