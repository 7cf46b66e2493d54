#pragma once

#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/messages/KxSipRequest.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <unordered_map>

using Clock = std::chrono::steady_clock;

/** Passwords by user name. */
using Users = std::map<std::string, std::string, std::less<>>;

/** Reads lines "user:password". Empty lines and those that begin with "#" are skipped. Throws std::runtime_error, which
    gives the number of a bad line and never its content. */
Users readUsers(const std::string& file);

/** Digest authentication as a server does it. [RFC 2617 3.2, RFC 3261 22]

    The library parses any credentials and computes the expected response, but it can't know what was offered. This
    class makes the further checks: realm, algorithm and qop are those of the challenge, the URI is that of the request,
    the user exists, and the nonce is ours, is fresh and has a higher nonce count than before. */
class Authenticator {
public:
    /** The nonce of a challenge, and the last request that used it. */
    struct Nonce {
        Clock::time_point end;
        std::uint32_t count = 0; ///< The highest nonce count that was used.
        std::string request;     ///< Identifies the request that used this count.
        std::string response;    ///< The bytes of the response to that request.
    };
    enum class Outcome {
        Refused,  ///< No credentials, or not those of a known user.
        Stale,    ///< Credentials of a user, but the nonce is not ours, is too old, or was used with this count.
        Repeated, ///< A retransmission of the request that used the nonce last: it is answered as before.
        Accepted,
    };
    struct Verdict {
        Outcome outcome = Outcome::Refused;
        std::string user;
        Nonce* nonce = nullptr; ///< Set for Accepted and Repeated; valid until the next challenge.
    };

    Authenticator(const std::string& realm, Users users);

    /** Checks the credentials of the request for the realm. Throws KxException if they can't be checked. */
    Verdict judge(const KxSipRequest& request);
    /** Returns a WWW-Authenticate header with a new challenge. */
    KxHandle<KxSipHeader> challenge(bool stale);

private:
    Verdict judge(KxSipDigestCredentialsInfo& credentials, const KxSipRequest& request);
    bool isUser(KxSipDigestCredentialsInfo& credentials, const KxSipRequest& request) const;

    KxString m_realm;
    Users m_users;
    std::unordered_map<std::string, Nonce> m_nonces;
    std::deque<std::string> m_order; // of m_nonces, oldest first
};
