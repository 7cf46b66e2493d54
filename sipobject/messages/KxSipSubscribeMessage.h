#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** SUBSCRIBE. Asks for notifications of a state. [RFC 6665 4.1.2] */
class KX_SIP_API KxSipSubscribeMessage : public KxSipMethodMessage<KxSipSubscribeMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipSubscribeMessage>;

    KxSipSubscribeMessage() = default;
};
