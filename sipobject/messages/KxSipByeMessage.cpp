#include "sipobject/messages/KxSipByeMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"

static constinit Oskan::AceCleanupLogger s_logger{"KxSipByeMessage"};

constinit const KxConstString KxSipByeMessage::sMethodName{"BYE"};

static const KxSipMessage::Registration<KxSipByeMessage> s_registration;

KxSipByeMessage::KxSipByeMessage(const KxHandle<KxSipInviteMessage>& invite) : KxSipMethodMessage(sMethodName) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipByeMessage ctor 1");
    const KxSipRequest& parent = required(invite, "Handle to request is NIL");
    const KxSipFromHeader& caller = required(parent.getFromHeader(), "Can't build SIP request without From header");
    const KxSipToHeader& called = required(parent.getToHeader(), "Can't build SIP request without To header");
    setTarget(caller.getNameAddress(), "Can't build SIP request: no SIP URL in From header");
    const auto from = KxMake<KxSipFromHeader>(called.getNameAddress());
    const auto to = KxMake<KxSipToHeader>(caller.getNameAddress());
    from->setTag(called.getTag().c_str());
    to->setTag(caller.getTag().c_str());
    addHeader(from, false);
    addHeader(to, false);
    addSequenceOf(parent, 1);
    setBodyOrNone(nullptr, nullptr, 0);
}

KxSipByeMessage::KxSipByeMessage(const KxHandle<KxSipResponse>& response) : KxSipMethodMessage(sMethodName) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipByeMessage ctor 2");
    const KxSipResponse& parent = required(response, "Handle to response is NIL");
    setTargetOf(parent, true);
    addPartiesOf(parent);
    addSequenceOf(parent, 1);
    setBodyOrNone(nullptr, nullptr, 0);
}
