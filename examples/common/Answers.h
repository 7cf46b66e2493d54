#pragma once

#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipResponse.h"

#include <string>
#include <string_view>

/** A stranger's text, so that it can't add lines to the log nor fill it. */
std::string printable(std::string_view text);

/** A response without a body: Via, From, To, Call-ID and CSeq of the request, and a To tag. Throws KxException where
    these are not there, since there is nothing to answer with then. */
KxHandle<KxSipResponse> makeResponse(int code, const KxHandle<KxSipRequest>& request);

/** Says in the top Via where the request really came from. [RFC 3261 18.2.1, RFC 3581 4] */
void noteSource(KxSipViaHeader& via, const std::string& host, unsigned port);

/** The port to which the answer to a datagram goes: never to another host than it came from, whatever "maddr" may
    say. */
unsigned replyPort(const KxSipViaHeader& via, unsigned source);

/** The whole message as it is sent. */
std::string bytesOf(const KxSipMessage& message);
