#pragma once

#include "tools/kxsip/MessageFacts.h"

#include <set>
#include <string>

/** Follows the transactions and dialogs of a call, to know when it has ended: when

    - each request that was seen has a final response, and each INVITE that was refused has its ACK, on every hop;
    - the last of these is no challenge (401, 407), after which the request comes again; and
    - the dialog that an INVITE began was ended by a BYE that was answered, and the subscription that a SUBSCRIBE began
      by a NOTIFY with the state "terminated". */
class CallProgress {
public:
    /** Takes the next message. One of which nothing can be read changes nothing. */
    void take(const ReadMessage& read, const MessageFacts& facts);

    bool hasEnded() const { return m_open.empty() && !m_isChallenged && !m_isSubscribed && m_dialog != Dialog::Open; }

private:
    enum class Dialog { None, Open, Over };

    void takeRequest(const KxSipMessage& request, const std::string& method);
    void takeResponse(const KxSipMessage& response, const MessageFacts& facts);
    void takeAck(const KxSipMessage& ack);
    void open(const std::string& transaction);
    bool close(const std::string& transaction);
    void openDialog() { m_dialog = m_dialog == Dialog::None ? Dialog::Open : m_dialog; }

    std::set<std::string> m_open; ///< The transactions that are not complete.
    std::set<std::string> m_closed;
    Dialog m_dialog = Dialog::None;
    bool m_isSubscribed = false;
    bool m_isChallenged = false;
};
