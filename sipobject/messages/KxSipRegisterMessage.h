#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** REGISTER. Binds contacts to an address of record. [RFC 3261 10] */
class KX_SIP_API KxSipRegisterMessage : public KxSipMethodMessage<KxSipRegisterMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipRegisterMessage>;

    KxSipRegisterMessage() = default;
};
