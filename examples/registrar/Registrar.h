#pragma once

#include "Authenticator.h"
#include "Bindings.h"

#include <string>
#include <string_view>

/** Answers requests: takes the bytes of a request and returns those of the response. Uses no sockets. Used by one
    thread. */
class Registrar {
public:
    /** A response, which goes to the host from which the request came. */
    struct Reply {
        std::string bytes; ///< If empty, nothing is sent.
        unsigned port = 0;
    };

    Registrar(const std::string& realm, Users users) : m_authenticator(realm, std::move(users)) {}

    /** Returns the response to a datagram; an empty one for responses, ACKs, keep-alives and requests without a Via
        that can be read. No datagram makes it throw. */
    Reply answer(std::string_view datagram, const std::string& host, unsigned port);

private:
    /** Returns the bytes of a response to a request that can't be processed; nothing for nil. */
    static Reply refuse(const KxHandle<KxSipResponse>& response, const std::string& host, unsigned port);
    std::string respond(const KxHandle<KxSipRequest>& request, std::string_view datagram, const std::string& host,
                        unsigned port);
    KxHandle<KxSipResponse> refuse(const KxHandle<KxSipRequest>& request, std::size_t size) const;
    KxHandle<KxSipResponse> serve(const KxHandle<KxSipRequest>& request, const std::string& user);

    Authenticator m_authenticator;
    Bindings m_bindings;
};
