#pragma once

#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipReading.h"
#include "sipobject/messages/KxSipRequest.h"

#include <string>
#include <string_view>

/** Returns at most 200 characters of untrusted text, with all but printable ASCII characters replaced by "?", so that
    the text can neither add lines to the log nor fill it. */
std::string printable(std::string_view text);

/** Returns host and port as in a URL; an IPv6 address gets brackets. */
std::string hostPort(const std::string& host, unsigned port);

/** Whether the Request-URI is "sips", which needs TLS on every hop; without TLS the answer is 416. [RFC 5630 3.1.1] */
bool isSecure(const KxSipRequest& request);

/** Whether a line was dropped that may matter. One without a value does not: user agents without extensions write
    "Supported:". [RFC 3261 20.37] */
bool lacksValues(const KxSipReading& reading);

/** Returns the port to which the response to a datagram goes. The host is always the one it came from, even if there is
    a "maddr". */
unsigned replyPort(const KxSipViaHeader& via, unsigned source);
