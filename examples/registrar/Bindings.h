#pragma once

#include "Authenticator.h"

#include "sipobject/messages/KxSipResponse.h"

#include <vector>

/** Where users can be reached: some addresses for each, until each one's time is up. [RFC 3261 10.3] */
class Bindings {
public:
    /** Does what a REGISTER asks for the user, all of it or nothing, and returns the status code of the answer. Throws
        KxException for what can't be read. */
    int update(const std::string& user, const KxSipRequest& request);

    /** Adds the user's addresses, each with the seconds that it has left, and the longest of these as Expires. */
    void addTo(KxSipResponse& response, const std::string& user) const;

private:
    struct Binding {
        KxHandle<KxSipContactHeader> contact; // our copy, without the values behind it
        KxString callId;
        std::uint32_t cseq = 0;
        Clock::time_point end;
    };

    std::map<std::string, std::vector<Binding>> m_users; // no more than there are in the password file
};
