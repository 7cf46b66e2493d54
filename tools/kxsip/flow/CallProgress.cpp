#include "tools/kxsip/flow/CallProgress.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "tools/kxsip/ObjectText.h"

namespace {

/** Returns what the messages of one transaction on one hop have in common. [RFC 3261 17.1.3, 17.2.3] */
std::string transactionOf(const KxSipMessage& message, const std::string& method) {
    const KxHandle<KxSipViaHeader> via = message.getViaHeader();
    const KxHandle<KxSipCSeqHeader> cseq = message.getCSeqHeader();
    return method + " " + (cseq.isNil() ? "" : std::to_string(cseq->getSeqNumber())) + " " +
           (via.isNil() ? "" : std::string(via->getBranch().view()));
}

bool endsSubscription(const KxSipMessage& notify) {
    const KxSipHeader* const state = notify.firstNamed("Subscription-State");
    return state != nullptr && serialized(*state).find(": terminated") != std::string::npos;
}

} // namespace

void CallProgress::take(const ReadMessage& read, const MessageFacts& facts) {
    if (read.object().isNil()) {
        return;
    }
    if (facts.isResponse()) {
        takeResponse(*read.object(), facts);
    } else if (facts.method == "ACK") {
        takeAck(*read.object());
    } else {
        takeRequest(*read.object(), facts.method);
    }
}

void CallProgress::takeRequest(const KxSipMessage& request, const std::string& method) {
    open(transactionOf(request, method));
    m_isChallenged = false;
    if (method == "NOTIFY" && endsSubscription(request)) {
        m_isSubscribed = false;
    }
}

/** A late repetition does not open a transaction again. */
void CallProgress::open(const std::string& transaction) {
    if (!m_closed.contains(transaction)) {
        m_open.insert(transaction);
    }
}

/** Returns whether the transaction was known. */
bool CallProgress::close(const std::string& transaction) {
    const bool isNew = m_closed.insert(transaction).second;
    return m_open.erase(transaction) > 0 || !isNew;
}

/** An INVITE that is refused stays open until its ACK. */
void CallProgress::takeResponse(const KxSipMessage& response, const MessageFacts& facts) {
    const std::string transaction = transactionOf(response, facts.method);
    if (facts.code < 200) {
        open(transaction);
        return;
    }
    const bool isSuccess = facts.code < 300;
    m_isChallenged = facts.code == 401 || facts.code == 407;
    if (facts.method != "INVITE" || isSuccess) {
        close(transaction);
    }
    if (facts.method == "INVITE" && isSuccess) {
        openDialog();
    } else if (facts.method == "SUBSCRIBE" && isSuccess) {
        m_isSubscribed = true;
    } else if (facts.method == "BYE" && !m_isChallenged) {
        m_dialog = Dialog::Over;
    }
}

/** The ACK of a refused INVITE has its branch; that of an accepted one has a branch of its own. */
void CallProgress::takeAck(const KxSipMessage& ack) {
    if (!close(transactionOf(ack, "INVITE"))) {
        openDialog();
    }
}
