#include "tools/kxsip/AddressPattern.h"

#include "tools/kxsip/Printable.h"

#include <algorithm>
#include <charconv>

#include <arpa/inet.h>

namespace {

/** Returns a number of digits only, up to `most`. */
std::optional<unsigned> numberOf(std::string_view text, unsigned most) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && number <= most ? std::optional(number) : std::nullopt;
}

/** Takes the text after the last separator off, if there is one. */
std::optional<std::string> takeOff(std::string& text, std::string_view separator) {
    const std::size_t at = text.rfind(separator);
    if (at == std::string::npos) {
        return std::nullopt;
    }
    std::string rest = text.substr(at + separator.size());
    text.erase(at);
    return rest;
}

} // namespace

std::optional<AddressPattern::Address> AddressPattern::sAddress(const std::string& text) {
    Address address;
    for (const int family : {AF_INET, AF_INET6}) {
        address.family = family;
        if (inet_pton(family, text.c_str(), address.bytes.data()) == 1) {
            return address;
        }
    }
    return std::nullopt;
}

std::optional<AddressPattern> AddressPattern::sRead(const std::string& text) {
    std::string host = text;
    const std::optional<std::string> bits = takeOff(host, "/");
    std::optional<std::string> port;
    if (host.starts_with('[')) {
        const std::optional<std::string> after = takeOff(host, "]");
        if (!after || (!after->empty() && !after->starts_with(':'))) {
            return std::nullopt;
        }
        host.erase(0, 1);
        port = after->empty() ? std::nullopt : std::optional(after->substr(1));
    } else if (std::count(host.begin(), host.end(), ':') == 1) {
        port = takeOff(host, ":");
    }
    const std::optional<Address> address = sAddress(host);
    if (!address || (port && bits) || (text.starts_with('[') && address->family != AF_INET6)) {
        return std::nullopt;
    }
    const unsigned all = address->family == AF_INET ? 32 : 128;
    const std::optional<unsigned> length = bits ? numberOf(*bits, all) : std::optional(all);
    const std::optional<unsigned> number = port ? numberOf(*port, 65535) : std::optional(0U);
    if (!length || !number) {
        return std::nullopt;
    }
    AddressPattern pattern;
    pattern.m_address = *address;
    pattern.m_bits = *length;
    pattern.m_port = port ? std::optional(static_cast<std::uint16_t>(*number)) : std::nullopt;
    return pattern;
}

std::string AddressPattern::sFault(const std::string& text) {
    return sRead(text) ? ""
                       : "\"" + printable(text) +
                             "\" is no address; write 192.0.2.1, 192.0.2.1:5060, [2001:db8::1]:5060 or 10.0.0.0/8";
}

bool AddressPattern::matches(const Endpoint& end) const {
    const std::optional<Address> other = m_port && *m_port != end.port ? std::nullopt : sAddress(end.address);
    if (!other || other->family != m_address.family) {
        return false;
    }
    const unsigned whole = m_bits / 8;
    if (!std::equal(m_address.bytes.begin(), m_address.bytes.begin() + whole, other->bytes.begin())) {
        return false;
    }
    const unsigned rest = m_bits % 8;
    return rest == 0 || (m_address.bytes.at(whole) ^ other->bytes.at(whole)) >> (8 - rest) == 0;
}
