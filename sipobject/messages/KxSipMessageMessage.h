#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** MESSAGE. Carries an instant message. [RFC 3428] */
class KX_SIP_API KxSipMessageMessage : public KxSipMethodMessage<KxSipMessageMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipMessageMessage>;

    KxSipMessageMessage() = default;
};
