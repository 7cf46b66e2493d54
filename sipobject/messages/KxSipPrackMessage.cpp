#include "sipobject/messages/KxSipPrackMessage.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipRAckHeader.h"
#include "sipobject/headers/KxSipRSeqHeader.h"

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

KxHandle<KxSipPrackMessage> KxSipPrackMessage::sFor(KxSipDialog& dialog, const KxSipResponse& response,
                                                    const KxSipDialogParts& parts) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipPrackMessage::sFor");
    const auto* const number = response.first<KxSipRSeqHeader>();
    const auto* const cseq = response.first<KxSipCSeqHeader>();
    if (number == nullptr || cseq == nullptr) {
        KxSipParseError::sThrow("A PRACK needs a response with RSeq and CSeq");
    }
    const auto rack = KxMake<KxSipRAckHeader>(number->getResponseNumber(), cseq->getSeqNumber(), cseq->getMethod());
    KxHandle<KxSipPrackMessage> prack = sEmpty();
    KxSipRequestBuilder(*prack, sMethodName).buildWithin(dialog, parts);
    prack->addHeader(rack, false);
    return prack;
}
