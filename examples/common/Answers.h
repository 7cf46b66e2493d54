#pragma once

#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipResponse.h"

#include <string>
#include <string_view>

/** Returns at most 200 characters of untrusted text, with all but printable ASCII characters replaced by "?", so that
    the text can neither add lines to the log nor fill it. */
std::string printable(std::string_view text);

/** Returns a response without a body, with Via, From, To, Call-ID and CSeq of the request and a To tag. Throws
    KxException if the request lacks one of these headers, since it can't be answered then. */
KxHandle<KxSipResponse> makeResponse(int code, const KxHandle<KxSipRequest>& request);

/** Adds the source of the request to the top Via: "received" and, if asked for, "rport". [RFC 3261 18.2.1, RFC 3581
    4] */
void noteSource(KxSipViaHeader& via, const std::string& host, unsigned port);

/** Returns the port to which the response to a datagram goes. The host is always the one it came from, even if there is
    a "maddr". */
unsigned replyPort(const KxSipViaHeader& via, unsigned source);

/** Returns the bytes of the message. */
std::string bytesOf(const KxSipMessage& message);
