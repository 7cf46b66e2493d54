#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** OPTIONS. Asks for the capabilities of the recipient. The constructors take the CSeq number as an int and the body as
    text. [RFC 3261 11] */
class KX_SIP_API KxSipOptionsMessage : public KxSipMethodMessage<KxSipOptionsMessage, int, char> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipOptionsMessage>;

    KxSipOptionsMessage() = default;
};
