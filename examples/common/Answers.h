#pragma once

#include "sipobject/headers/KxSipViaHeader.h"

#include <string>
#include <string_view>

/** Returns at most 200 characters of untrusted text, with all but printable ASCII characters replaced by "?", so that
    the text can neither add lines to the log nor fill it. */
std::string printable(std::string_view text);

/** Returns the port to which the response to a datagram goes. The host is always the one it came from, even if there is
    a "maddr". */
unsigned replyPort(const KxSipViaHeader& via, unsigned source);
