#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"
#include "sipobject/messages/KxSipResponse.h"

/** ACK. Acknowledges the final response to an INVITE. [RFC 3261 13.2.2.4, 17.1.1.3] */
class KX_SIP_API KxSipAckMessage : public KxSipMethodMessage<KxSipAckMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** Builds the ACK for a response to an INVITE, with its From, To, Call-ID and CSeq number. The Request-URI is the
        Contact of a 2xx if it has one, else the To URI. The ACK uses the connection of a response that came over TCP or
        TLS. The caller adds Via and Route. The body is copied.
        Throws KxSipParseError "The SIP ACK Request is only for INVITE Response", "Handle to response is NIL", the
        errors of setBody, and an error if the response lacks a required header or SIP URL. */
    KxSipAckMessage(const KxHandle<KxSipResponse>& response, const void* body, const char* contentType,
                    std::uint32_t bodyLength);
    KxSipAckMessage(const KxHandle<KxSipResponse>& response, const void* body, KxSipText contentType,
                    std::uint32_t bodyLength)
        : KxSipAckMessage(response, body, contentType.neededIf(bodyLength != 0, "Content-Type").c_str(), bodyLength) {}

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipAckMessage>;

    KxSipAckMessage() = default;
};
