#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** REFER. Asks the recipient to contact a third party. [RFC 3515] */
class KX_SIP_API KxSipReferMessage : public KxSipMethodMessage<KxSipReferMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipReferMessage>;

    KxSipReferMessage() = default;
};
