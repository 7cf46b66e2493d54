#pragma once

#include "Authenticator.h"

#include "sipobject/messages/KxSipResponse.h"

#include <vector>

/** The addresses at which users can be reached, each with its expiry time. [RFC 3261 10.3] */
class Bindings {
public:
    /** Makes all the changes that a REGISTER asks for, or none, and returns the status code of the response. Throws
        KxException if a value can't be read. */
    int update(const std::string& user, const KxSipRequest& request);

    /** Adds the user's addresses to the response, each with the seconds that are left, and Expires with the longest of
        these times. */
    void addTo(KxSipResponse& response, const std::string& user) const;

private:
    struct Binding {
        KxHandle<KxSipContactHeader> contact; // our copy, without the values that followed it
        KxString callId;
        std::uint32_t cseq = 0;
        Clock::time_point end;
    };

    std::map<std::string, std::vector<Binding>> m_users; // at most the users of the password file
};
