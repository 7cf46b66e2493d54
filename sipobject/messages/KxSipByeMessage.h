#pragma once

#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipMethodMessage.h"
#include "sipobject/messages/KxSipResponse.h"

/** BYE. Ends a session. [RFC 3261 15.1] */
class KX_SIP_API KxSipByeMessage : public KxSipMethodMessage<KxSipByeMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** Builds the BYE for a received INVITE. From and To are swapped with their tags, and their other header parameters
        are dropped. The Call-ID is the same, the CSeq number is the next one, and the Request-URI is the From URI.
        Throws KxSipParseError "Handle to request is NIL", and an error if the INVITE lacks a required header or SIP
        URL. */
    explicit KxSipByeMessage(const KxHandle<KxSipInviteMessage>& invite);
    /** Builds the BYE for a received response, with its From, To and Call-ID and the next CSeq number. The Request-URI
        is its Contact if it has one, else the To URI. Throws KxSipParseError "Handle to response is NIL", and an error
        if the response lacks a required header or SIP URL. */
    explicit KxSipByeMessage(const KxHandle<KxSipResponse>& response);

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipByeMessage>;

    KxSipByeMessage() = default;
};
