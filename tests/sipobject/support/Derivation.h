#pragma once

#include "sipobject/messages/KxSipAckMessage.h"
#include "sipobject/messages/KxSipByeMessage.h"
#include "sipobject/messages/KxSipCancelMessage.h"
#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipPrackMessage.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/MessageSupport.h"

/** The message as one of class M; nil when it is none. */
template <class M>
KxHandle<M> as(const KxHandle<KxSipMessage>& message) {
    return KxHandle<M>(dynamic_cast<M*>(message.get()));
}

/** Derives from the message what `how` says: "response 200", "ack", "bye", "cancel" or "prack". For those that take a
    body, " body" at the end adds one of text/plain;x=1. */
inline KxHandle<KxSipMessage> derive(const KxHandle<KxSipMessage>& parent, std::string how) {
    const void* body = nullptr;
    const char* type = nullptr;
    unsigned length = 0;
    if (how.ends_with(" body")) {
        how.resize(how.size() - 5);
        body = "ok\r\n";
        type = "text/plain;x=1";
        length = 4;
    }
    if (how.starts_with("response ")) {
        return KxMake<KxSipResponse>(std::stoi(how.substr(9)), as<KxSipRequest>(parent), body, type, length);
    }
    if (how == "ack") {
        return KxMake<KxSipAckMessage>(as<KxSipResponse>(parent), body, type, length);
    }
    if (how == "prack") {
        return KxMake<KxSipPrackMessage>(as<KxSipResponse>(parent), body, type, length);
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
