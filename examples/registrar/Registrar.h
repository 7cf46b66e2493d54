#pragma once

#include "Authenticator.h"
#include "Bindings.h"

#include <string>
#include <string_view>

/** Answers requests: bytes in, bytes out. Knows nothing of sockets; used by one thread. */
class Registrar {
public:
    /** What to send back, to the address from which the request came. */
    struct Reply {
        std::string bytes; ///< Nothing is sent where there are none.
        unsigned port = 0;
    };

    Registrar(const std::string& realm, Users users) : m_authenticator(realm, std::move(users)) {}

    /** The answer to a datagram; none to responses, ACKs, keep-alives and what can't be read. Throws nothing that a
        datagram could cause. */
    Reply answer(std::string_view datagram, const std::string& host, unsigned port);

private:
    std::string respond(const KxHandle<KxSipRequest>& request, std::string_view datagram, const std::string& host,
                        unsigned port);
    KxHandle<KxSipResponse> refuse(const KxHandle<KxSipRequest>& request, std::size_t size) const;
    KxHandle<KxSipResponse> serve(const KxHandle<KxSipRequest>& request, const std::string& user);

    Authenticator m_authenticator;
    Bindings m_bindings;
};
