#pragma once

#include "fuzz/MessageRound.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/messages/KxSipAckMessage.h"
#include "sipobject/messages/KxSipByeMessage.h"
#include "sipobject/messages/KxSipCancelMessage.h"
#include "sipobject/messages/KxSipPrackMessage.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "sipobject/messages/KxSipUnknownRequest.h"

#include <string>

using LivesMessage = KxHandle<KxSipMessage>;

template <class M>
KxHandle<M> as(const LivesMessage& message) {
    return KxHandle<M>(dynamic_cast<M*>(message.get()));
}

inline LivesMessage copyOf(const KxSipMessage& message) {
    return LivesMessage(static_cast<KxSipMessage*>(message.clone()));
}

/** The key, or the reason why there is none. */
inline std::string keyOf(const KxSipMessage& message) {
    return outcomeOf([&] { return std::string(message.createKey().view()); });
}

/** By what a message belongs to a dialog and a transaction. */
struct LivesIds {
    explicit LivesIds(const KxSipMessage& message) {
        const auto text = [](const KxString& value) { return std::string(value.isNil() ? "-" : value.view()); };
        if (const auto id = message.getCallIdHeader(); !id.isNil()) {
            callId = text(id->getCallId());
        }
        if (const auto header = message.getFromHeader(); !header.isNil()) {
            from = text(header->getTag());
        }
        if (const auto header = message.getToHeader(); !header.isNil()) {
            to = text(header->getTag());
        }
        if (const auto cseq = message.getCSeqHeader(); !cseq.isNil()) {
            number = cseq->getSeqNumber();
        }
    }
    LivesIds(std::string theCallId, std::string fromTag, std::string toTag, std::uint32_t sequence)
        : callId(std::move(theCallId)), from(std::move(fromTag)), to(std::move(toTag)), number(sequence) {}
    /** As seen from the other side. */
    LivesIds swapped() const { return {callId, to, from, number}; }
    LivesIds next() const { return {callId, from, to, number + 1}; }
    LivesIds withTo(const std::string& tag) const { return {callId, from, tag, number}; }
    std::string text() const { return callId + '|' + from + '|' + to + '|' + std::to_string(number); }

    std::string callId, from, to;
    std::uint32_t number = 0;
};

/** Derives a message from another one in one of nine ways, of which a parent that is no INVITE has only the first. */
class LivesDerivation {
public:
    LivesDerivation(const LivesMessage& parent, unsigned how, unsigned with)
        : m_response(as<KxSipResponse>(parent)),
          m_request(as<KxSipRequest>(parent)),
          m_invite(as<KxSipInviteMessage>(parent)),
          m_how(how % (m_request.isNil()  ? 5
                       : m_invite.isNil() ? 6
                                          : 9)),
          m_before(*parent),
          m_expected(m_before) {
        const std::string text = written(*parent);
        const std::string body = with % 2 == 0 ? "" : "body\r\n";
        outcomeOf([&] {
            make(static_cast<int>(100 + with * 2), body);
            return std::string();
        });
        same("a message from which others are derived stays as it is", text, written(*parent));
        if (!derived.isNil()) {
            check(*parent);
        }
    }

    LivesMessage derived; ///< Nil if the parent lacks what is needed.

private:
    void make(int code, const std::string& body) {
        const auto length = static_cast<std::uint32_t>(body.size());
        const KxSipResponseParts parts{.statusCode = code, .contact = "<sip:c@h>", .contentType = "a/b", .body = body};
        const auto answer = [&] {
            const KxHandle<KxSipResponse> response = KxSipResponse::sBuild(*m_invite, parts);
            m_expected = m_before.withTo(LivesIds(*response).to);
            return response;
        };
        switch (m_how) {
        case 0:
            derived = KxMake<KxSipAckMessage>(m_response, body.data(), "a/b", length);
            break;
        case 1:
            derived = KxMake<KxSipPrackMessage>(m_response, body.data(), "a/b", length);
            m_expected = m_before.next();
            break;
        case 2:
            derived = KxMake<KxSipCancelMessage>(m_request);
            break;
        case 3:
            if (!m_invite.isNil()) {
                derived = KxMake<KxSipByeMessage>(m_invite);
                m_expected = LivesIds(m_before.callId, cut(m_before.to), cut(m_before.from), m_before.number).next();
            } else {
                derived = KxMake<KxSipByeMessage>(m_response);
                m_expected = m_before.next();
            }
            break;
        case 4:
            derived = KxMake<KxSipResponse>(code, m_request, body.data(), "a/b", length);
            break;
        case 5:
            derived = KxSipResponse::sBuild(*m_request, parts);
            m_expected = m_before.withTo(m_before.to == "-" && code != 100 ? LivesIds(*derived).to : m_before.to);
            break;
        case 6:
            derived = KxSipCancelMessage::sFor(*m_invite);
            break;
        case 7:
            derived = KxSipAckMessage::sFor(*m_invite, *answer());
            break;
        default:
            KxSipDialog dialog = KxSipDialog::sOfCallee(*m_invite, *answer());
            derived = KxSipRequest::sWithin(dialog, "INFO", {.contentType = "a/b", .body = body});
            m_expected = m_expected.swapped();
            m_expected.number = dialog.getLocalSequence();
        }
    }
    /** The constructors take a tag as text that ends at a NUL. */
    static std::string cut(const std::string& tag) { return tag.substr(0, tag.find('\0')); }
    void check(const KxSipMessage& parent) {
        if (!derived->isValid()) {
            fail("a derived message is valid", written(parent), written(*derived));
        }
        same("a derived message is of the same dialog", m_expected.text(), LivesIds(*derived).text());
        const bool isSameTransaction = m_how == 2 || (m_how >= 4 && m_how <= 6);
        if (isSameTransaction && parent.getStatus() != KX_STATUS_UNUSABLE) {
            same("a response, and a CANCEL, has the key of its request", keyOf(parent), keyOf(*derived));
        }
        if (derived->getViaHeader().isNil()) {
            as<KxSipRequest>(derived)->insertViaHeader("h", 5060, "UDP");
        }
        const std::string text = written(*derived);
        same("a copy is written as its original", text, written(*copyOf(*derived)));
        checkSecondRound(*derived, text, derived->isValid());
    }

    KxHandle<KxSipResponse> m_response;
    KxHandle<KxSipRequest> m_request;
    KxHandle<KxSipInviteMessage> m_invite;
    unsigned m_how;
    LivesIds m_before;
    LivesIds m_expected;
};

/** Changes what a derived message might share with its parent. */
inline void spoil(KxSipMessage& message) {
    const auto spoilList = [](const auto& header) {
        if (!header.isNil()) {
            header->setParameter("spoilt", KxString("1"));
        }
    };
    spoilList(message.getViaHeader());
    spoilList(message.getFromHeader());
    spoilList(message.getToHeader());
    message.getCSeqHeader()->setSeqNumber(message.getCSeqHeader()->getSeqNumber() ^ 1);
    const auto* const request = dynamic_cast<const KxSipRequest*>(&message);
    if (request != nullptr && request->getURI()->isSipURL()) {
        request->getURL()->setMAddrParam(KxString("spoilt"));
    }
}

/** Builds a request from the parts of another message, with one of the constructors; nil if there are too few. */
inline LivesMessage buildFromPartsOf(const KxSipMessage& message, unsigned with) {
    const auto copy = [&]<class H>(const KxHandle<H>& header) {
        return KxHandle<H>(header.isNil() ? nullptr : static_cast<H*>(header->clone()));
    };
    const auto from = copy(message.getFromHeader());
    const auto to = copy(message.getToHeader());
    const auto contact = copy(message.getContactHeader());
    const KxHandle<KxSipNameAddress> target = to.isNil() ? KxHandle<KxSipNameAddress>() : to->getNameAddress();
    const auto text = [](const auto& header) { return header.isNil() ? "" : written(*header->getNameAddress()); };
    const auto length = static_cast<std::uint32_t>(with / 64);
    LivesMessage built;
    outcomeOf([&] {
        switch (with % 4) {
        case 0:
            built = KxMake<KxSipUnknownRequest>("FOO", text(from).c_str(), text(to).c_str(),
                                                contact.isNil() || contact->isWildCard() ? "*" : text(contact).c_str(),
                                                "a@h", with, "a/b", "body", length);
            break;
        case 1:
            built = KxMake<KxSipUnknownRequest>("FOO", from, to, contact, nullptr, 0U, "a/b", "body", length);
            break;
        case 2:
            built = KxMake<KxSipByeMessage>(target, from, to, contact, "a@h", with, "a/b", "body", length);
            break;
        default:
            built = KxMake<KxSipInviteMessage>(target.isNil() ? KxHandle<KxURI>() : target->getURI(), from, to, contact,
                                               "a@h", with, "a/b", "body", length);
        }
        return std::string();
    });
    if (!built.isNil()) {
        as<KxSipRequest>(built)->insertViaHeader("h", with, "TCP");
    }
    return built;
}
