#pragma once

#include "sipobject/SipApi.h"
#include "util/KxString.h"

class KxSipRequest;

/** The branch under which a stateless proxy forwards a received request. Other hosts use
    KxSipViaHeader::setBranchRFC3261. */
class KX_SIP_API KxSipBranch {
public:
    KxSipBranch() = delete;

    /** The same text for each retransmission, and for the CANCEL, and the ACK of a non-2xx response, of an INVITE whose
        sender follows RFC 3261; another one for each other transaction. Throws KxSipParseError for a request without
        Via. [RFC 3261 16.11] */
    [[nodiscard]] static KxString sStateless(const KxSipRequest& received);
};
