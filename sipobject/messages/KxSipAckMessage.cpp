#include "sipobject/messages/KxSipAckMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"

static constinit Oskan::AceCleanupLogger s_logger{"KxSipAckMessage"};

constinit const KxConstString KxSipAckMessage::sMethodName{"ACK"};

static const KxSipMessage::Registration<KxSipAckMessage> s_registration;

KxSipAckMessage::KxSipAckMessage(const KxHandle<KxSipResponse>& response, const void* body, const char* contentType,
                                 std::uint32_t bodyLength)
    : KxSipMethodMessage(sMethodName) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipAckMessage ctor");
    acknowledge(response, 0, "The SIP ACK Request is only for INVITE Response");
    setBodyOrNone(body, contentType, bodyLength);
    copyConnection(*response);
}

KxHandle<KxSipAckMessage> KxSipAckMessage::sWithin(const KxSipDialog& dialog, const KxSipInviteMessage& invite,
                                                   const KxSipDialogParts& parts) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipAckMessage::sWithin");
    KxHandle<KxSipAckMessage> ack = sEmpty();
    KxSipRequestBuilder(*ack, sMethodName).buildAck(dialog, invite, parts);
    return ack;
}

KxHandle<KxSipAckMessage> KxSipAckMessage::sFor(const KxSipInviteMessage& invite, const KxSipResponse& response,
                                                const KxSipDialogParts& parts) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipAckMessage::sFor");
    KxHandle<KxSipAckMessage> ack = sEmpty();
    KxSipRequestBuilder(*ack, sMethodName).buildAck(invite, response, parts);
    ack->copyConnection(response);
    return ack;
}
