// Whole messages. Law: what is accepted can be written (but for credentials without a response that name no MD5); what was
// written is read again and written as the same bytes, but for what a header line or a URI, read and written on its own,
// becomes (fuzz_header and fuzz_url look at those); a copy is written as its original; every stream is told the same
// bytes; a stream that dribbles reads as memory does.

#include "fuzz/FuzzSupport.h"
#include "sipobject/address/KxURI.h"
#include "sipobject/messages/KxSipRequest.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace {

/** Has no window, so it is told of every piece. */
class Pieces final : public KxOutputStream {
public:
    std::string text;
    int flushes = 0;
    void flush() override { ++flushes; }

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override { text.append(bytes, count); }
};

template <class T>
std::string written(const T& object) {
    KxByteArrayOutputStream out(16);
    object.serialize(out);
    return std::string(out.view());
}

struct Outcome {
    KxHandle<KxSipMessage> message;
    std::string text; ///< As written, or why there is none.
    bool isParseError = false;
};

Outcome read(KxInputStream& in) {
    Outcome outcome;
    try {
        outcome.message = KxSipMessage::sConstructFrom(in);
        outcome.text = written(*outcome.message);
    } catch (const KxHandle<KxException>& failure) {
        outcome.message = nullptr;
        outcome.text = std::string("! ").append(failure->getExceptionMessage().view());
        outcome.isParseError = !isExactly<KxException>(*failure);
    }
    return outcome;
}

Outcome readText(std::string_view text) {
    const auto block = std::make_unique<char[]>(text.size());
    text.copy(block.get(), text.size());
    KxByteArrayInputStream in(std::string_view(block.get(), text.size()));
    return read(in);
}

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
        m_unsure = isExactly<KxURI>(*request.getURI()) || *request.getMethod() == '\0';
        const std::string printed(request.getURI()->getString().view());
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

void checkSecondRound(const Outcome& first) {
    const KxSipMessage& message = *first.message;
    const Expected expected(message, first.text);
    if (expected.isUnsure()) {
        return;
    }
    const Outcome second = readText(first.text);
    if (second.message.isNil()) {
        // A message with bad lines is not asked for what every message must carry; once they are gone it is.
        if (!expected.loses() && (second.isParseError || message.isValid())) {
            fail("what was written is read again", first.text, second.text);
        }
    } else if (second.text != expected.text()) {
        fail("what was written is written again", expected.text(), second.text);
    }
}

void checkWriting(const Outcome& first) {
    const KxHandle<KxSipMessage> copy(static_cast<KxSipMessage*>(first.message->clone()));
    const std::string copied = written(*copy);
    if (copied != first.text) {
        fail("a copy is written as its original", first.text, copied);
    }
    Pieces pieces;
    first.message->serialize(pieces);
    if (pieces.text != first.text || pieces.flushes != 1) {
        fail("every stream is told the same", first.text, pieces.text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    KxByteArrayInputStream in(text);
    const Outcome first = read(in);
    Dribble dribble(text);
    const Outcome slow = read(dribble);
    if (slow.text != first.text) {
        fail("a stream that dribbles reads as memory", first.text, slow.text);
    }
    if (!first.message.isNil()) {
        checkWriting(first);
        checkSecondRound(first);
    }
    return 0;
}
