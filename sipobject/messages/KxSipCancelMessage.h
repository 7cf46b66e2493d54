#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** CANCEL. Gives up a request that is still pending. [RFC 3261 9.1] */
class KX_SIP_API KxSipCancelMessage : public KxSipMethodMessage<KxSipCancelMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** From the request that is given up: its From, To, Request-URI, Call-ID, CSeq number and top Via. Throws
        KxSipParseError "Handle to request is NIL" and where the request lacks one of them. */
    explicit KxSipCancelMessage(const KxHandle<KxSipRequest>& request);

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipCancelMessage>;

    KxSipCancelMessage() = default;
};
