#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"
#include "sipobject/messages/KxSipResponse.h"

/** PRACK. Acknowledges a reliable provisional response. [RFC 3262 4] */
class KX_SIP_API KxSipPrackMessage : public KxSipMethodMessage<KxSipPrackMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** Builds the PRACK for a response to an INVITE, with its From, To and Call-ID and the next CSeq number. The
        Request-URI is chosen as for an ACK, so it is the To URI for a provisional response. The caller adds RAck, Via
        and Route. The body is copied.
        Throws KxSipParseError "The SIP PRACK Request is only for INVITE Response", "Handle to response is NIL", the
        errors of setBody, and an error if the response lacks a required header or SIP URL. */
    KxSipPrackMessage(const KxHandle<KxSipResponse>& response, const void* body, const char* contentType,
                      std::uint32_t bodyLength);
    KxSipPrackMessage(const KxHandle<KxSipResponse>& response, const void* body, KxSipText contentType,
                      std::uint32_t bodyLength)
        : KxSipPrackMessage(response, body, contentType.neededIf(bodyLength != 0, "Content-Type").c_str(), bodyLength) {
    }

    /** The PRACK for a reliable provisional response, one with RSeq: a request within the dialog that the response
        makes, with the RAck for it. Throws KxSipParseError for a response without RSeq or CSeq. [RFC 3262 4, 7.2] */
    [[nodiscard]] static KxHandle<KxSipPrackMessage> sFor(KxSipDialog& dialog, const KxSipResponse& response,
                                                          const KxSipDialogParts& parts = {});
    /** A PRACK needs the RAck for a response: see sFor. */
    static KxHandle<KxSipPrackMessage> sWithin(KxSipDialog&, const KxSipDialogParts& = {}) = delete;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipPrackMessage>;

    KxSipPrackMessage() = default;
};
