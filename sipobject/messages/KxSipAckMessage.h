#pragma once

#include "sipobject/messages/KxSipInviteMessage.h"
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

    /** The ACK for a final response to the INVITE. For a non-2xx response, it has the Request-URI, top Via, Route, From
        and Call-ID of the INVITE and the To of the response, and `parts` are not used. For a 2xx, it is a request
        within the dialog that the response makes, with the credentials of the INVITE; without a Via in `parts` it has
        the top Via of the INVITE with a new branch.
        Throws KxSipParseError for a provisional response, for a 2xx to an INVITE with a To tag (see sWithin), one that
        is not for the INVITE, and missing headers.
        [RFC 3261 17.1.1.3, 13.2.2.4] */
    [[nodiscard]] static KxHandle<KxSipAckMessage> sFor(const KxSipInviteMessage& invite, const KxSipResponse& response,
                                                        const KxSipDialogParts& parts = {});
    /** The ACK for a 2xx response to an INVITE of this dialog, such as a re-INVITE, with the CSeq number and the
        credentials of the INVITE. Before it, KxSipDialog::confirm or refresh takes over what the response changes.
        Throws KxSipParseError for missing headers. [RFC 3261 13.2.2.4] */
    [[nodiscard]] static KxHandle<KxSipAckMessage> sWithin(const KxSipDialog& dialog, const KxSipInviteMessage& invite,
                                                           const KxSipDialogParts& parts = {});

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipAckMessage>;

    KxSipAckMessage() = default;
};
