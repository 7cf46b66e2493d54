#include "util/KxSocketImpl.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace {

constinit const KxConstString s_upperUdp{"UDP"};
constinit const KxConstString s_upperTcp{"TCP"};
constinit const KxConstString s_upperTls{"TLS"};
constinit const KxConstString s_upperSctp{"SCTP"};
constinit const KxConstString s_upperWs{"WS"};
constinit const KxConstString s_upperWss{"WSS"};
constinit const KxConstString s_upperUnknown{"UNKNOWN"};
constinit const KxConstString s_lowerUdp{"udp"};
constinit const KxConstString s_lowerTcp{"tcp"};
constinit const KxConstString s_lowerTls{"tls"};
constinit const KxConstString s_lowerSctp{"sctp"};
constinit const KxConstString s_lowerWs{"ws"};
constinit const KxConstString s_lowerWss{"wss"};
constinit const KxConstString s_lowerUnknown{"unknown"};

struct Names {
    const KxConstString& upper;
    const KxConstString& lower;
};
constexpr Names kNames[] = {{s_upperUdp, s_lowerUdp},   {s_upperTcp, s_lowerTcp}, {s_upperTls, s_lowerTls},
                            {s_upperSctp, s_lowerSctp}, {s_upperWs, s_lowerWs},   {s_upperWss, s_lowerWss}};
constexpr Names kUnknown = {s_upperUnknown, s_lowerUnknown};

/** The characters in one number, with letters as lower case. Setting bit 0x20 gives a lower-case letter only for that
    letter in either case. */
constexpr std::uint32_t keyOf(std::string_view name) {
    const auto at = [&](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(name[i])} << (8 * i); };
    switch (name.size()) {
    case 2:
        return at(0) | at(1) | 0x2020U;
    case 3:
        return at(0) | at(1) | at(2) | 0x202020U;
    case 4:
        return at(0) | at(1) | at(2) | at(3) | 0x20202020U;
    default:
        return 0;
    }
}

} // namespace

Oskan::Fallible<KxSocketImpl::Transport> KxSocketImpl::parseTransport(std::string_view name) {
    switch (keyOf(name)) {
    case keyOf("udp"):
        return UDP;
    case keyOf("tcp"):
        return TCP;
    case keyOf("tls"):
        return TLS;
    case keyOf("sctp"):
        return SCTP;
    case keyOf("ws"):
        return WS;
    case keyOf("wss"):
        return WSS;
    default:
        return {};
    }
}

const KxString& KxSocketImpl::getTransportString(Transport transport, bool lowerCase) {
    const auto index = static_cast<unsigned>(transport);
    const Names& names = index < std::size(kNames) ? kNames[index] : kUnknown;
    return lowerCase ? names.lower : names.upper;
}
