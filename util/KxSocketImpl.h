#pragma once

#include "core/Fallible.h"
#include "util/KxString.h"
#include "util/UtilApi.h"

#include <string_view>

/** The transports that SIP runs over (RFC 3261, RFC 4168, RFC 7118) and their names. */
class KX_UTIL_API KxSocketImpl {
public:
    enum Transport : int { UDP = 0, TCP = 1, TLS = 2, SCTP = 3, WS = 4, WSS = 5 };

    KxSocketImpl() = delete;

    /** The transport of that name in any letter case; invalid for any other text, surrounding blanks included. */
    [[nodiscard]] static Oskan::Fallible<Transport> parseTransport(std::string_view name);
    /** As above; invalid for null. */
    [[nodiscard]] static Oskan::Fallible<Transport> parseTransport(const char* name) {
        return name == nullptr ? Oskan::Fallible<Transport>() : parseTransport(std::string_view(name));
    }

    /** "UDP" or, with `lowerCase`, "udp"; "UNKNOWN" or "unknown" for a number that is not a transport. The strings are
        constants that live as long as the process. */
    [[nodiscard]] static const KxString& getTransportString(Transport transport, bool lowerCase = false);
};
