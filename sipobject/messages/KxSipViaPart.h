#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/headers/KxSipViaHeader.h"

/** The Via of the host that sends a request. Without a host, no Via is added. [RFC 3261 18.1.1, 20.42] */
struct KxSipViaPart {
    KxSipAnyText host;              ///< Name or address at which responses are expected; IPv6 in the RFC grammar only.
    unsigned port = 5060;           ///< 5061 is usual for TLS.
    KxSipAnyText transport = "UDP"; ///< In any letter case.
    KxSipAnyText branch = nullptr;  ///< A new one if none is given. [RFC 3261 8.1.1.7]
    bool rport = false;             ///< Whether to ask for responses to the source port of the request. [RFC 3581 3]

    bool isNone() const { return host.isNone(); }
    /** A new header; nil if there is no host. Throws KxSipParseError for a host or branch that can't be read back, and,
        in the classic grammar, for an unknown transport. */
    KX_SIP_API KxHandle<KxSipViaHeader> make() const;
};
