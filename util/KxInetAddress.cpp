#include "util/KxInetAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <unistd.h>

namespace {

/** The text without brackets and zone; empty if these are malformed. */
std::string_view bareIPv6(std::string_view text) {
    if (text.starts_with('[')) {
        if (!text.ends_with(']')) {
            return {};
        }
        text = text.substr(1, text.size() - 2);
    }
    const std::size_t zone = text.find('%');
    if (zone == std::string_view::npos) {
        return text;
    }
    return zone + 1 < text.size() ? text.substr(0, zone) : std::string_view();
}

} // namespace

bool KxInetAddress::initFromAddress(std::string_view text) {
    const bool isIPv6 = text.find(':') != std::string_view::npos;
    if (isIPv6) {
        text = bareIPv6(text);
    }
    char terminated[INET6_ADDRSTRLEN];
    if (text.size() >= sizeof terminated || text.find('\0') != std::string_view::npos) {
        return false;
    }
    terminated[text.copy(terminated, sizeof terminated)] = '\0';
    KxInetAddress read;
    read.m_family = isIPv6 ? Family::IPv6 : Family::IPv4;
    if (inet_pton(isIPv6 ? AF_INET6 : AF_INET, terminated, read.m_bytes.data()) != 1) {
        return false;
    }
    *this = read;
    return true;
}

KxString KxInetAddress::getHostAddress() const {
    if (isNone()) {
        return KxString();
    }
    char text[INET6_ADDRSTRLEN];
    return KxString(inet_ntop(isIPv6() ? AF_INET6 : AF_INET, m_bytes.data(), text, sizeof text));
}

KxString KxInetAddress::sGetLocalHostName() {
    char name[256];
    if (gethostname(name, sizeof name) != 0) {
        return KxString();
    }
    name[sizeof name - 1] = '\0';
    const std::string_view text(name);
    const bool isUsable = std::all_of(text.begin(), text.end(), [](char c) {
        return KxAscii::isAlpha(c) || KxAscii::isDigit(c) || c == '-' || c == '_' || c == '.';
    });
    return isUsable ? KxString(text) : KxString();
}
