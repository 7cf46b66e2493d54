#pragma once

#include "util/KxString.h"
#include "util/UtilApi.h"

#include <array>
#include <cstdint>
#include <string_view>

/** An IPv4 or IPv6 address, or none. A small value. */
class KX_UTIL_API KxInetAddress {
public:
    /** No address. */
    constexpr KxInetAddress() = default;

    /** Resets to no address. */
    void constructor() { *this = KxInetAddress(); }

    /** Reads "192.0.2.1" or an IPv6 text (RFC 4291 section 2.2). The latter may have brackets, and a zone
        ("[fe80::1%eth0]"), which is dropped. Returns false, without a change, when the text is neither or is null.
        Names are not looked up. */
    bool initFromAddress(std::string_view text);
    bool initFromAddress(const char* text) { return text != nullptr && initFromAddress(std::string_view(text)); }

    /** The address as text, IPv6 shortened and without brackets (RFC 5952); empty when there is none. */
    KxString getHostAddress() const;

    bool isNone() const { return m_family == Family::None; }
    bool isIPv6() const { return m_family == Family::IPv6; }

    friend bool operator==(const KxInetAddress&, const KxInetAddress&) = default;

    /** The name of this host, without any look-up. Empty when there is no name that a message may contain (letters,
        digits, hyphens, underscores, dots). */
    static KxString sGetLocalHostName();

private:
    enum class Family : std::uint8_t { None, IPv4, IPv6 };

    std::array<unsigned char, 16> m_bytes{}; // in network order; IPv4 in the first four
    Family m_family = Family::None;
};
static_assert(sizeof(KxInetAddress) <= 24);
