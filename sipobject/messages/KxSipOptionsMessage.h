#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** OPTIONS. Asks what the recipient can do. The CSeq number is given as an int, the body as text. [RFC 3261 11] */
class KX_SIP_API KxSipOptionsMessage : public KxSipMethodMessage<KxSipOptionsMessage, int, char> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipOptionsMessage>;

    KxSipOptionsMessage() = default;
};
