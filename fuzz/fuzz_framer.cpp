// Streams of messages. The first two bytes say how the rest is cut into pieces. Laws: any cut gives the frames of the
// whole. A message is a part of the input, and the parser reads it to its end. An input that is one message is used up.

#include "fuzz/FuzzSupport.h"
#include "sipobject/messages/KxSipFramer.h"
#include "sipobject/messages/KxSipMessage.h"

namespace {

using Kind = KxSipFramer::Kind;

constexpr KxSipFramer::Limits kLimits{2048, 512};

/** Reads the frames of a stream in pieces, until an error. */
class Reading {
public:
    /** Reads a piece, which is in a block of its own, so that views of earlier pieces are found to be invalid. */
    void read(std::string_view piece) {
        const Block block(piece);
        std::string_view rest = block.view();
        for (Kind kind = Kind::Message; kind != Kind::Incomplete && !m_hasFailed;) {
            const KxSipFramer::Frame frame = m_framer.next(rest);
            rest.remove_prefix(frame.consumed);
            m_consumed += frame.consumed;
            kind = frame.kind;
            m_hasFailed = kind == Kind::Error;
            if (kind != Kind::Incomplete) {
                m_frames.append(std::to_string(static_cast<int>(kind))).append(frame.bytes).append(frame.errorText());
                m_frames += " up to " + std::to_string(m_consumed) + "\n";
            }
            if (kind == Kind::Message) {
                m_message = frame.bytes;
            }
        }
    }
    bool hasFailed() const { return m_hasFailed; }
    std::size_t consumed() const { return m_consumed; }
    const std::string& frames() const { return m_frames; }
    const std::string& lastMessage() const { return m_message; }

private:
    KxSipFramer m_framer{KxSipFramer::Mode::Stream, kLimits};
    std::size_t m_consumed = 0;
    bool m_hasFailed = false;
    std::string m_frames;
    std::string m_message;
};

void checkCut(std::string_view text, const std::string& frames, std::uint32_t seed) {
    Reading cut;
    while (!text.empty() && !cut.hasFailed()) {
        seed = seed * 1664525U + 1013904223U;
        const std::size_t size = 1 + ((seed >> 16) & (seed >> 24) & 0xFF); // short pieces, and some long ones
        cut.read(text.substr(0, size));
        text.remove_prefix(std::min(size, text.size()));
    }
    same("any cut gives the frames of the whole", frames, cut.frames());
}

/** A message that the parser accepts has the body that the framer found. Headers of the URI may give another length. */
void checkParsed(std::string_view message) {
    KxByteArrayInputStream in(message);
    const std::string failure = outcomeOf([&in] {
        KxSipMessage::sConstructFrom(in);
        return std::string();
    });
    if (failure.empty() && in.available() != 0 && !hasAnyOf(message.substr(0, message.find('\n')), "?")) {
        fail("the parser reads a message to its end", message, in.window());
    }
}

void checkOneMessage(std::string_view text) {
    KxSipFramer framer(KxSipFramer::Mode::Messages, kLimits);
    const KxSipFramer::Frame frame = framer.next(text);
    const bool isPart = frame.bytes.empty() || (frame.bytes.data() >= text.data() &&
                                                frame.bytes.data() + frame.bytes.size() <= text.data() + text.size());
    if (frame.consumed != text.size() || !isPart || !framer.pending().empty()) {
        fail("an input that is one message is used up", text, frame.bytes);
    }
    if (frame.kind == Kind::Message) {
        checkParsed(frame.bytes);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);
    Reading whole;
    whole.read(text);
    if (!whole.hasFailed() && whole.consumed() != text.size()) {
        fail("all input is consumed", text, whole.frames());
    }
    if (text.find(whole.lastMessage()) == std::string_view::npos) {
        fail("a message is part of the input", text, whole.lastMessage());
    }
    checkParsed(whole.lastMessage());
    checkCut(text, whole.frames(), data[0] * 256U + data[1]);
    checkOneMessage(Block(text).view());
    return 0;
}
