#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"
#include "sipobject/messages/KxSipResponse.h"

/** ACK. Acknowledges the final response to an INVITE. [RFC 3261 13.2.2.4, 17.1.1.3] */
class KX_SIP_API KxSipAckMessage : public KxSipMethodMessage<KxSipAckMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** From a response to an INVITE: its From, To, Call-ID and CSeq number; sent to the Contact of a 2xx, where it has
        one, else to the To URI; over the connection of a response that came over TCP or TLS. Via and Route are the
        caller's to add. The body is copied.
        Throws KxSipParseError "The SIP ACK Request is only for INVITE Response", "Handle to response is NIL", what
        setBody throws, and where the response lacks a header or a SIP URL that is needed. */
    KxSipAckMessage(const KxHandle<KxSipResponse>& response, const void* body, const char* contentType,
                    std::uint32_t bodyLength);

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipAckMessage>;

    KxSipAckMessage() = default;
};
