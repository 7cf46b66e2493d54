#pragma once

#include "sipobject/messages/KxSipRequestParts.h"

/** The parts of a request within a dialog that the dialog does not determine, by name; all that is not given has a
    default. The texts must live until the request is built. [RFC 3261 12.2.1.1] */
struct KxSipDialogParts {
    KxSipPart<KxSipContactHeader> contact = {}; ///< Needed for the methods that refresh the dialog.
    std::uint32_t maxForwards = 70;
    KxSipViaPart via = {};              ///< None by default.
    KxSipAnyText contentType = nullptr; ///< Needed with a body.
    std::string_view body = {};         ///< Copied. None by default.
};
