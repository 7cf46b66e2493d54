#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** NOTIFY. Informs a subscriber of the state that it subscribed to. [RFC 6665 4.1.3] */
class KX_SIP_API KxSipNotifyMessage : public KxSipMethodMessage<KxSipNotifyMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipNotifyMessage>;

    KxSipNotifyMessage() = default;
};
