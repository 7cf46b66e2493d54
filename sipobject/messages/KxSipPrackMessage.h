#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"
#include "sipobject/messages/KxSipResponse.h"

/** PRACK. Acknowledges a reliable provisional response. [RFC 3262 4] */
class KX_SIP_API KxSipPrackMessage : public KxSipMethodMessage<KxSipPrackMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** From a response to an INVITE: its From, To and Call-ID, the next CSeq number; sent where an ACK would be, so to
        the To URI for a provisional response. RAck, Via and Route are the caller's to add. The body is copied.
        Throws KxSipParseError "The SIP PRACK Request is only for INVITE Response", "Handle to response is NIL", what
        setBody throws, and where the response lacks a header or a SIP URL that is needed. */
    KxSipPrackMessage(const KxHandle<KxSipResponse>& response, const void* body, const char* contentType,
                      std::uint32_t bodyLength);

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipPrackMessage>;

    KxSipPrackMessage() = default;
};
