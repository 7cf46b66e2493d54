#pragma once

#include "sipobject/address/KxURI.h"
#include "tools/kxsip/ReadMessage.h"

#include <string>

/** The user that a message is from, for, or about: the user part of a URI, or the number of a tel URI. */
class UserPattern {
public:
    explicit UserPattern(const std::string& name);

    /** Whether From, To, P-Asserted-Identity or the Request-URI has this user. The letter case counts, escapes are
        resolved, and the separators of a telephone number are ignored in a tel URI. [RFC 3261 19.1.4, RFC 3966 4] */
    bool matches(const KxSipMessage& message) const;

private:
    bool isOf(const KxHandle<KxURI>& uri) const;

    std::string m_name;
    std::string m_number; ///< The name without separators.
};
