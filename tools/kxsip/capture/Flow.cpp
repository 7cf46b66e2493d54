#include "tools/kxsip/capture/Flow.h"

#include <algorithm>

#include <arpa/inet.h>

namespace {

bool isSipPort(std::uint16_t port) {
    return port == 5060 || port == 5061 || port == 5080;
}

} // namespace

IpAddress IpAddress::sOf(std::string_view octets) {
    IpAddress address;
    address.isV6 = octets.size() == address.octets.size();
    std::copy(octets.begin(), octets.end(), address.octets.begin());
    return address;
}

std::string IpAddress::text() const {
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(isV6 ? AF_INET6 : AF_INET, octets.data(), text.data(), text.size());
    return text.data();
}

bool Flow::hasSipPort() const {
    return isSipPort(sourcePort) || isSipPort(destinationPort);
}

Origin Flow::origin(std::chrono::microseconds time, const char* transport) const {
    return {time, {source.text(), sourcePort}, {destination.text(), destinationPort}, transport};
}
