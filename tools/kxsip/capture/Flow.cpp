#include "tools/kxsip/capture/Flow.h"

#include <array>
#include <charconv>

#include <arpa/inet.h>

namespace {

bool isSipPort(std::uint16_t port) {
    return port == 5060 || port == 5061 || port == 5080;
}

} // namespace

IpAddress IpAddress::sOf(std::string_view octets) {
    IpAddress address;
    address.isV6 = octets.size() > 4;
    for (const char octet : octets) {
        address.high = address.high << 8 | address.low >> 56;
        address.low = address.low << 8 | static_cast<unsigned char>(octet);
    }
    return address;
}

std::string IpAddress::text() const {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (isV6) {
        std::array<std::uint8_t, 16> octets{};
        for (std::size_t i = 0; i < 8; ++i) {
            octets.at(i) = static_cast<std::uint8_t>(high >> (56 - 8 * i));
            octets.at(8 + i) = static_cast<std::uint8_t>(low >> (56 - 8 * i));
        }
        inet_ntop(AF_INET6, octets.data(), text.data(), text.size());
        return text.data();
    }
    std::size_t length = 0; // inet_ntop formats IPv4 with sprintf, which costs more than all else that is done here
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char* const end =
            std::to_chars(text.data() + length, text.data() + text.size(), low >> shift & 0xFFU).ptr;
        length = static_cast<std::size_t>(end - text.data());
        text.at(length++) = '.';
    }
    return {text.data(), length - 1};
}

bool Flow::hasSipPort() const {
    return isSipPort(sourcePort) || isSipPort(destinationPort);
}

Origin Flow::origin(std::chrono::microseconds time, const char* transport) const {
    return {time, {source.text(), sourcePort}, {destination.text(), destinationPort}, transport};
}
