#pragma once

#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipMethodMessage.h"
#include "sipobject/messages/KxSipResponse.h"

/** BYE. Ends a session. [RFC 3261 15.1] */
class KX_SIP_API KxSipByeMessage : public KxSipMethodMessage<KxSipByeMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** From an INVITE that was received: its From and To change places, their tags with them, other header parameters
        are dropped; its Call-ID, the next CSeq number; sent to the From URI. Throws KxSipParseError "Handle to request
        is NIL" and where the INVITE lacks a header or a SIP URL that is needed. */
    explicit KxSipByeMessage(const KxHandle<KxSipInviteMessage>& invite);
    /** From a response that was received: its From, To and Call-ID, the next CSeq number; sent to its Contact, where it
        has one, else to the To URI. Throws KxSipParseError "Handle to response is NIL" and as above. */
    explicit KxSipByeMessage(const KxHandle<KxSipResponse>& response);

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipByeMessage>;

    KxSipByeMessage() = default;
};
