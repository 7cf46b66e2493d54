#include "util/KxSocketImpl.h"

#include <algorithm>
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

/** By transport. */
struct Names {
    const KxConstString& upper;
    const KxConstString& lower;
};
constexpr Names kNames[] = {{s_upperUdp, s_lowerUdp},   {s_upperTcp, s_lowerTcp}, {s_upperTls, s_lowerTls},
                            {s_upperSctp, s_lowerSctp}, {s_upperWs, s_lowerWs},   {s_upperWss, s_lowerWss}};
constexpr Names kUnknown = {s_upperUnknown, s_lowerUnknown};

/** The characters in one number, with letters as lower case: setting bit 0x20 gives a lower-case letter only for that
    letter in either case. 0 for names that are too short or too long. */
constexpr std::uint32_t keyOf(std::string_view name) {
    if (name.size() < 2 || name.size() > 4) {
        return 0;
    }
    const auto byte = [name](std::size_t i) { return static_cast<unsigned char>(name[i]) | 0x20U; };
    const std::uint32_t ends = byte(0) << 16 | byte(1) << 8 | byte(name.size() - 1);
    return ends | (name.size() < 4 ? static_cast<std::uint32_t>(name.size()) : byte(2)) << 24;
}
constexpr std::uint32_t kKeys[] = {keyOf("udp"), keyOf("tcp"), keyOf("tls"), keyOf("sctp"), keyOf("ws"), keyOf("wss")};

} // namespace

Oskan::Fallible<KxSocketImpl::Transport> KxSocketImpl::parseTransport(std::string_view name) {
    const auto* const found = std::find(std::begin(kKeys), std::end(kKeys), keyOf(name));
    if (found == std::end(kKeys)) {
        return {};
    }
    return static_cast<Transport>(found - std::begin(kKeys));
}

const KxString& KxSocketImpl::getTransportString(Transport transport, bool lowerCase) {
    const auto index = static_cast<unsigned>(transport);
    const Names& names = index < std::size(kNames) ? kNames[index] : kUnknown;
    return lowerCase ? names.lower : names.upper;
}
