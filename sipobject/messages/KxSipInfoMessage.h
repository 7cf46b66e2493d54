#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** INFO. Carries application data within a dialog. [RFC 6086] */
class KX_SIP_API KxSipInfoMessage : public KxSipMethodMessage<KxSipInfoMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipInfoMessage>;

    KxSipInfoMessage() = default;
};
