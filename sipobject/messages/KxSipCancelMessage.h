#pragma once

#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipMethodMessage.h"

/** CANCEL. Cancels a pending request. [RFC 3261 9.1] */
class KX_SIP_API KxSipCancelMessage : public KxSipMethodMessage<KxSipCancelMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** Builds the CANCEL for a request, with its From, To, Request-URI, Call-ID, CSeq number and top Via. Throws
        KxSipParseError "Handle to request is NIL", and an error if the request lacks one of these. */
    explicit KxSipCancelMessage(const KxHandle<KxSipRequest>& request);

    /** The CANCEL for an INVITE: its Request-URI, top Via, Route, From, To, Call-ID and CSeq number, and no Require or
        Proxy-Require. Throws KxSipParseError if the INVITE lacks one that is needed. [RFC 3261 9.1] */
    [[nodiscard]] static KxHandle<KxSipCancelMessage> sFor(const KxSipInviteMessage& invite);
    /** A CANCEL has the CSeq number of its INVITE: see sFor. */
    static KxHandle<KxSipCancelMessage> sWithin(KxSipDialog&, const KxSipDialogParts& = {}) = delete;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipCancelMessage>;

    KxSipCancelMessage() = default;
};
