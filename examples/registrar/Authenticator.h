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

/** Reads lines "user:password"; empty ones and those that begin with "#" are skipped. Throws std::runtime_error, which
    names the line and never says what stands in it. */
Users readUsers(const std::string& file);

/** Digest authentication as a server does it. [RFC 2617 3.2, RFC 3261 22]

    The library reads any credentials and computes what they should have been; it can't know what was offered. So all
    that makes the result worth something is asked here: that realm, algorithm and qop are those of the challenge, that
    the URI is the request's, that the user exists, and that the nonce is ours, fresh and counted upwards. */
class Authenticator {
public:
    /** A challenge that was made, and the last request that answered it. */
    struct Nonce {
        Clock::time_point end;
        std::uint32_t count = 0; ///< The highest that was used.
        std::string request;     ///< The one that used it,
        std::string response;    ///< and how it was answered.
    };
    enum class Outcome {
        Refused,  ///< No credentials, or not those of a user.
        Stale,    ///< A user's, but the nonce is not ours, too old, or was used with this count.
        Repeated, ///< The very request that used the nonce last: it is answered as before.
        Accepted,
    };
    struct Verdict {
        Outcome outcome = Outcome::Refused;
        std::string user;
        Nonce* nonce = nullptr; ///< Of what was accepted or repeated; holds until the next challenge.
    };

    Authenticator(const std::string& realm, Users users);

    /** Judges the request by its credentials for the realm. Throws KxException for what can't be judged. */
    Verdict judge(const KxSipRequest& request);
    /** A new challenge, as a WWW-Authenticate header. */
    KxHandle<KxSipHeader> challenge(bool stale);

private:
    Verdict judge(KxSipDigestCredentialsInfo& credentials, const KxSipRequest& request);
    bool isUser(KxSipDigestCredentialsInfo& credentials, const KxSipRequest& request) const;

    KxString m_realm;
    Users m_users;
    std::unordered_map<std::string, Nonce> m_nonces;
    std::deque<std::string> m_order; // of m_nonces, oldest first
};
