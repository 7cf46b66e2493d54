#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipobject/address/KxURI.h"
#include "sipobject/messages/KxSipRequest.h"

#include <algorithm>
#include <string>
#include <string_view>

/** A message that was read, or why there is none. */
struct ReadMessage {
    explicit ReadMessage(KxInputStream& in) {
        text = outcomeOf([&] {
            try {
                message = KxSipMessage::sConstructFrom(in);
                return written(*message);
            } catch (const KxHandle<KxException>& failure) {
                message = nullptr;
                isParseError = !isExactly<KxException>(*failure);
                throw;
            }
        });
    }

    KxHandle<KxSipMessage> message;
    std::string text; ///< As written, or why there is none.
    bool isParseError = false;
};

/** What a second round makes of the message; a part that a round changes is read on its own for it. */
class Expected {
public:
    explicit Expected(const KxSipMessage& message, std::string_view text) {
        const auto* const request = dynamic_cast<const KxSipRequest*>(&message);
        if (request != nullptr) {
            takeURI(*request);
        } else {
            m_text = text.substr(0, text.find('\n') + 1);
        }
        for (const HeaderID id : message.getHeaderOrder()) {
            for (const KxSipHeader* value = message.getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                takeHeader(*value);
            }
        }
        m_text.append("\r\n");
        if (message.hasBody()) {
            m_text.append(message.getBody(),
                          std::min<std::size_t>(message.getBodyLength(), message.getStoredBodyLength()));
        }
    }
    const std::string& text() const { return m_text; }
    /** The parts can't be told from the whole: one of them becomes something of another kind. */
    bool isUnsure() const { return m_unsure; }
    /** A line is dropped or the Request-URI refused. */
    bool loses() const { return m_loses; }

private:
    void takeURI(const KxSipRequest& request) {
        // A scheme behind a tab is none that is known, though it passes for one; written, it is known. A method that
        // begins with a NUL reads as empty, and without a method no start line is written.
        if (request.getURI().isNil()) { // of a request that was read it never is
            m_unsure = true;
            return;
        }
        m_unsure = isExactly<KxURI>(*request.getURI()) || *request.getMethod() == '\0';
        const std::string printed(request.getURI()->getString().view());
        m_loses = hasAnyOf(printed, " \n"); // parameters that came in an address may hold what no start line can
        KxByteArrayInputStream in{std::string_view(printed)};
        try {
            const KxHandle<KxURI> uri = KxURI::sConstructFrom(in, true);
            m_unsure = m_unsure || uri->hasHeaders();
            m_text = std::string(request.getMethod()) + ' ' + std::string(uri->getString().view()) + " SIP/2.0\r\n";
        } catch (const KxHandle<KxException>&) {
            m_loses = true;
        }
    }

    void takeHeader(const KxSipHeader& value) {
        const KxHandle<KxSipHeader> alone(static_cast<KxSipHeader*>(value.clone()));
        const std::string line = written(*alone);
        KxByteArrayInputStream in{std::string_view(line)};
        try {
            const KxHandle<KxSipHeader> again = KxSipHeader::sConstructFrom(in);
            // A name that was folded, or that control characters surrounded, is written as the one it looks like.
            m_unsure = m_unsure || again->getHeaderID() != value.getHeaderID();
            m_text += written(*again);
        } catch (const KxHandle<KxException>&) {
            m_loses = true;
        }
        // Should a line end have got into a value, it is a fault of that class, which the next round would show.
        m_unsure = m_unsure || in.peek() >= 0;
    }

    std::string m_text;
    bool m_unsure = false;
    bool m_loses = false;
};

/** What was written of a message is read again and written as the same, but for what one of its parts becomes. Unless
    the message is whole, it may be refused for what it lacks. */
inline void checkSecondRound(const KxSipMessage& message, std::string_view text, bool isWhole) {
    const Expected expected(message, text);
    if (expected.isUnsure()) {
        return;
    }
    const Block block(text);
    KxByteArrayInputStream in(block.view());
    const ReadMessage second(in);
    if (!second.message.isNil()) {
        same("what was written is written again", expected.text(), second.text);
    } else if (!expected.loses() && (second.isParseError || isWhole)) {
        // A message with bad lines is not asked for what every message must carry; once they are gone it is.
        fail("what was written is read again", text, second.text);
    }
}
