#include "sipobject/messages/KxSipCancelMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"

static constinit Oskan::AceCleanupLogger s_logger{"KxSipCancelMessage"};

constinit const KxConstString KxSipCancelMessage::sMethodName{"CANCEL"};

static const KxSipMessage::Registration<KxSipCancelMessage> s_registration;

KxSipCancelMessage::KxSipCancelMessage(const KxHandle<KxSipRequest>& request) : KxSipMethodMessage(sMethodName) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipCancelMessage ctor");
    const KxSipRequest& parent = required(request, "Handle to request is NIL");
    addPartiesOf(parent);
    required(parent.getURI(), "Can't build SIP request without Request-URI");
    setURI(parent.getURI());
    addSequenceOf(parent, 0);
    required(parent.getHeaderByID(KxHeaderIDs::kVia), "Can't build SIP request without Via header");
    addCopyOf(parent, KxHeaderIDs::kVia);
    setBodyOrNone(nullptr, nullptr, 0);
}

KxHandle<KxSipCancelMessage> KxSipCancelMessage::sFor(const KxSipInviteMessage& invite) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipCancelMessage::sFor");
    KxHandle<KxSipCancelMessage> cancel = sEmpty();
    KxSipRequestBuilder(*cancel, sMethodName)
        .buildInTransaction(invite, required(invite.getToHeader(), "Can't build SIP request without To header"));
    cancel->copyConnection(invite);
    return cancel;
}
