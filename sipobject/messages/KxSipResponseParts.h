#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/messages/KxSipPart.h"

#include <string_view>

/** The parts of a response that the request does not determine, by name; all that is not given has a default. The texts
    must live until the response is built. [RFC 3261 8.2.6] */
struct KxSipResponseParts {
    int statusCode = 200;
    KxSipAnyText reasonPhrase = nullptr; ///< By default the usual one of the code.
    /** The tag of To, if the request has none there; new by default. All responses to one request that belong to one
        dialog need the same. */
    KxSipAnyText toTag = nullptr;
    KxSipPart<KxSipContactHeader> contact = {}; ///< Needed in a 2xx response to INVITE, SUBSCRIBE, UPDATE or REFER.
    KxSipAnyText contentType = nullptr;         ///< Needed with a body.
    std::string_view body = {};                 ///< Copied. None by default.
};
