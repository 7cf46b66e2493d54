#pragma once

#include "sipobject/messages/KxSipAckMessage.h"
#include "sipobject/messages/KxSipByeMessage.h"
#include "sipobject/messages/KxSipCancelMessage.h"
#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipPrackMessage.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/MessageSupport.h"

/** The message as an M; nil if it is none. */
template <class M>
KxHandle<M> as(const KxHandle<KxSipMessage>& message) {
    return KxHandle<M>(dynamic_cast<M*>(message.get()));
}

/** Derives from the message: `how` is "response 200", "ack", "bye", "cancel" or "prack". A further " body" adds a body
    of text/plain;x=1 to a response, ACK or PRACK. */
inline KxHandle<KxSipMessage> derive(const KxHandle<KxSipMessage>& parent, const std::string& how) {
    const bool hasBody = how.ends_with(" body");
    const auto make = [&]<class M>(const auto&... parents) {
        return KxMake<M>(parents..., hasBody ? "ok\r\n" : nullptr, hasBody ? "text/plain;x=1" : nullptr,
                         hasBody ? 4U : 0U);
    };
    if (how.starts_with("response ")) {
        return make.operator()<KxSipResponse>(std::stoi(how.substr(9)), as<KxSipRequest>(parent));
    }
    if (how.starts_with("ack")) {
        return make.operator()<KxSipAckMessage>(as<KxSipResponse>(parent));
    }
    if (how.starts_with("prack")) {
        return make.operator()<KxSipPrackMessage>(as<KxSipResponse>(parent));
    }
    if (how == "cancel") {
        return KxMake<KxSipCancelMessage>(as<KxSipRequest>(parent));
    }
    if (!parent.isNil() && parent->isRequest()) {
        return KxMake<KxSipByeMessage>(as<KxSipInviteMessage>(parent));
    }
    return KxMake<KxSipByeMessage>(as<KxSipResponse>(parent));
}

/** What is written of the derived message, or the class and text of what is thrown. */
inline std::string derivedText(const KxHandle<KxSipMessage>& parent, const std::string& how) {
    return outcomeOf([&] { return written(*derive(parent, how)); });
}
