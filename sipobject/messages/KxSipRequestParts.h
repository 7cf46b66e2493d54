#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/address/KxURI.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipRouteHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipPart.h"
#include "sipobject/messages/KxSipViaPart.h"

#include <cstdint>
#include <string_view>
#include <vector>

/** The parts of a request outside a dialog, by name; all that is not given has a default. [RFC 3261 8.1.1]

        const auto invite = KxSipInviteMessage::sBuild({.from = "<sip:alice@a.example>",
                                                        .to = "<sip:bob@b.example>",
                                                        .contact = "<sip:alice@10.0.0.1>",
                                                        .via = {.host = "10.0.0.1"},
                                                        .contentType = "application/sdp",
                                                        .body = sdp});

    The texts must live until the request is built. */
struct KxSipRequestParts {
    KxSipPart<KxURI> requestUri = {};                     ///< The URI of To by default. Its headers are left out.
    KxSipPart<KxSipFromHeader> from = {};                 ///< Needed. A new tag is added if it has none.
    KxSipPart<KxSipToHeader> to = {};                     ///< Needed.
    KxSipPart<KxSipContactHeader> contact = {};           ///< Needed for the methods that make or refresh a dialog.
    KxSipAnyText callId = nullptr;                        ///< A new one by default.
    std::uint32_t cseq = 0;                               ///< 0: a new one.
    std::uint32_t maxForwards = 70;                       ///< [RFC 3261 8.1.1.6]
    KxSipViaPart via = {};                                ///< None by default.
    std::vector<KxSipPart<KxSipRouteHeader>> routes = {}; ///< In order; none by default.
    KxSipAnyText contentType = nullptr;                   ///< Needed with a body, such as "application/sdp".
    std::string_view body = {};                           ///< Copied. None by default.
};
