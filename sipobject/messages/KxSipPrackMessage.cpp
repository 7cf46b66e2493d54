#include "sipobject/messages/KxSipPrackMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"

static constinit Oskan::AceCleanupLogger s_logger{"KxSipPrackMessage"};

constinit const KxConstString KxSipPrackMessage::sMethodName{"PRACK"};

static const KxSipMessage::Registration<KxSipPrackMessage> s_registration;

KxSipPrackMessage::KxSipPrackMessage(const KxHandle<KxSipResponse>& response, const void* body, const char* contentType,
                                     std::uint32_t bodyLength)
    : KxSipMethodMessage(sMethodName) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipPrackMessage ctor");
    acknowledge(response, 1, "The SIP PRACK Request is only for INVITE Response");
    setBodyOrNone(body, contentType, bodyLength);
}
