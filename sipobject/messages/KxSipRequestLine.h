#pragma once

#include "sipobject/messages/KxStatus.h"
#include "util/KxHandle.h"

class KxInputStream;
class KxURI;

/** The part of a Request-Line after the method; see KxSipRequest. [RFC 3261 25.1] */
struct KxSipRequestLine {
    /** Reads the line, including its LF. Returns an error as a fault, but throws the errors of the URI's class. */
    static KxSipRequestLine sRead(KxInputStream& in);

    /** The Request-URI, with its angle brackets. Its scheme is "sip" or "tel" if there is no fault. */
    KxHandle<KxURI> uri;
    const char* fault = nullptr; ///< The text of the error, or null.
    /** The status of a request with the fault; KX_STATUS_VALID if the fault does not decide it. */
    KxStatus status = KX_STATUS_VALID;
};
