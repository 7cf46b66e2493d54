#pragma once

#include "sipobject/KxSipHost.h"
#include "sipobject/address/KxSipURL.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

/** Stores parts of a KxSipURL that was read; if kStrict, checks them by RFC 3261 25.1 first. */
template <bool kStrict>
class KxSipURLParts {
public:
    static constexpr KxSipFault kWrongFormat{"Sip URL wrong format"};

    KxSipURLParts() = delete;

    /** An empty password is written, too, if kStrict. */
    [[gnu::always_inline]] static void sSetPassword(KxSipURL& url, std::string_view text) {
        url.m_password = KxString(text);
        if (kStrict && text.empty()) {
            url.setForm(KxSipURL::kEmptyPassword, true);
        }
    }

    /** Returns false, without a change, for text that can't be the host. */
    [[gnu::always_inline]] static bool sSetHost(KxSipURL& url, std::string_view text) {
        if constexpr (kStrict) {
            const KxSipHost host(text);
            if (!host.isValid()) {
                return false;
            }
            url.setForm(KxSipURL::kIPv6Host, host.isIPv6());
            text = host.text();
        }
        url.m_host = KxString(text);
        return true;
    }

    /** Returns false, without a change, for text that can't be a port. No text changes nothing. */
    [[gnu::always_inline]] static bool sSetPort(KxSipURL& url, std::string_view digits) {
        if (digits.empty()) {
            return true;
        }
        const std::int64_t port = KxAscii::toNumber(digits);
        if (kStrict && (!sIsPort(port) || !sAreDigits(digits))) {
            return false;
        }
        url.m_port = static_cast<std::uint32_t>(port);
        url.m_hasPort = true;
        return true;
    }

    static constexpr bool sIsPort(std::int64_t number) { return number <= 65535; }

private:
    static bool sAreDigits(std::string_view text) {
        return std::all_of(text.begin(), text.end(), [](char c) { return KxAscii::isDigit(c); });
    }
};
