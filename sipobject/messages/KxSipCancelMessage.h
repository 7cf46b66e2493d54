#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** CANCEL. Cancels a pending request. [RFC 3261 9.1] */
class KX_SIP_API KxSipCancelMessage : public KxSipMethodMessage<KxSipCancelMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** Builds the CANCEL for a request, with its From, To, Request-URI, Call-ID, CSeq number and top Via. Throws
        KxSipParseError "Handle to request is NIL", and an error if the request lacks one of these. */
    explicit KxSipCancelMessage(const KxHandle<KxSipRequest>& request);

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipCancelMessage>;

    KxSipCancelMessage() = default;
};
