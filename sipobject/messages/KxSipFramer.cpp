#include "sipobject/messages/KxSipFramer.h"

#include "sipobject/KxSipLine.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxStreamTokenizer.h"

#include <algorithm>
#include <limits>

namespace {

using Error = KxSipFramer::Error;

constexpr std::string_view kPing = "\r\n\r\n";
constexpr std::string_view kPong = "\r\n";
constexpr std::size_t kIdleCapacity = 8192; // bytes that a framer keeps allocated between messages

bool isContentLength(std::string_view name) {
    const auto is = [name](std::string_view token) { // most names differ in length
        return name.size() == token.size() && KxAscii::equalsNoCase(name, token);
    };
    return is(KxSipContentLengthHeader::sToken) || is(KxSipContentLengthHeader::sCompactToken);
}

/** Reads the value of a Content-Length, which must be 1*DIGIT. */
Error readNumber(KxSipLine& line, std::size_t& number) {
    const int first = KxStreamTokenizer::sDiscardWhite(line);
    if (first < '0' || first > '9') {
        return Error::BadContentLength;
    }
    number = KxStreamTokenizer::sGetUnsigned(line);
    KxStreamTokenizer::sDiscardWhite(line);
    return line.window() == "\r\n" ? Error::None : Error::BadContentLength;
}

/** Reads the Content-Length of a whole header section, line by line as the parser of messages does. */
Error readLength(std::string_view headerSection, std::size_t& length) {
    KxByteArrayInputStream in(headerSection);
    in.consume(headerSection.find('\n') + 1);
    KxSipLine line;
    Error error = Error::NoContentLength;
    for (int c = in.peek(); c >= 0 && c != '\n'; c = in.peek()) {
        if (c == '\r') {
            in.consume(1);
        } else if (const KxSipFault fault = line.take(in); !fault && isContentLength(line.key())) {
            std::size_t number = 0;
            if (const Error wrong = readNumber(line, number); wrong != Error::None) {
                return wrong;
            }
            if (error == Error::None && number != length) {
                return Error::ContentLengthsDiffer;
            }
            length = number;
            error = Error::None;
        }
    }
    return error;
}

/** Whether a body of that length is above the limit, or its length too large to be known. */
bool isTooLarge(std::size_t length, std::size_t limit) {
    return length > limit || length >= std::numeric_limits<std::uint32_t>::max();
}

} // namespace

std::string_view KxSipFramer::Frame::errorText() const {
    switch (error) {
    case Error::None:
        break;
    case Error::ContentLengthsDiffer:
        return "Content-Length occurs with different values";
    case Error::NoContentLength:
        return "Content-Length is missing";
    case Error::BadContentLength:
        return "Content-Length is not a number";
    case Error::BodyTooLarge:
        return "the body is too large";
    case Error::HeaderSectionTooLarge:
        return "the header section is too large";
    case Error::Truncated:
        return "the message ends too early";
    }
    return {};
}

KxSipFramer::Frame KxSipFramer::next(std::string_view input) {
    if (m_progress.error != Error::None) {
        return {Kind::Error, m_progress.error, {}, input.size()};
    }
    release();
    const Progress before = m_progress;
    const std::size_t kept = m_kept.size();
    try {
        return m_mode == Mode::Stream ? nextOfStream(input) : nextMessage(input);
    } catch (...) { // there is no memory
        m_progress = before;
        m_kept.resize(kept);
        throw;
    }
}

KxSipFramer::Frame KxSipFramer::nextOfStream(std::string_view input) {
    std::size_t begin = 0; // of what is not in m_kept
    while (m_progress.state == State::Between) {
        if (begin == input.size()) {
            return {Kind::Incomplete, Error::None, {}, begin};
        }
        const char c = input[begin];
        if (c != '\r' && c != '\n') {
            m_progress.state = State::Line;
        } else if (const Kind kind = readLineEnd(c); ++begin, kind != Kind::Incomplete) {
            return {kind, Error::None, kind == Kind::Ping ? kPing : kPong, begin};
        }
    }
    if (m_progress.state != State::Body) {
        const std::size_t room = m_limits.headerSection - m_kept.size();
        const std::size_t read = readHeaderSection(input.substr(begin, room));
        const bool isWhole = m_progress.state == State::Body;
        if (isWhole || read == room) {
            const bool isInInput = m_kept.empty();
            const std::string_view section = joined(input.substr(begin, read));
            const std::size_t end = begin + read;
            std::size_t length = 0;
            const Error error = isWhole ? readLength(section, length) : Error::HeaderSectionTooLarge;
            if (error != Error::None || isTooLarge(length, m_limits.body)) {
                return returned(Kind::Error, error != Error::None ? error : Error::BodyTooLarge, section, end);
            }
            m_progress.length = section.size() + length;
            begin = isInInput ? begin : end;
        }
    }
    const std::string_view rest = input.substr(begin);
    if (m_progress.state != State::Body || rest.size() < m_progress.length - m_kept.size()) {
        m_kept.append(rest);
        return {Kind::Incomplete, Error::None, {}, input.size()};
    }
    const std::size_t missing = m_progress.length - m_kept.size();
    return returned(Kind::Message, Error::None, joined(rest.substr(0, missing)), begin + missing);
}

/** Returns the frame of an input that is one message. */
KxSipFramer::Frame KxSipFramer::nextMessage(std::string_view input) {
    const std::string_view text = input.substr(std::min(input.find_first_not_of("\r\n"), input.size()));
    if (text.empty()) {
        const Kind kind = input == kPing ? Kind::Ping : input == kPong ? Kind::Pong : Kind::Incomplete;
        return {kind, Error::None, kind == Kind::Incomplete ? std::string_view() : input, input.size()};
    }
    m_progress.state = State::Line;
    const std::string_view section = text.substr(0, readHeaderSection(text.substr(0, m_limits.headerSection)));
    const bool isWhole = m_progress.state == State::Body;
    m_progress = {};
    const auto failed = [&](Error error) { return Frame{Kind::Error, error, section, input.size()}; };
    if (!isWhole) {
        return failed(section.size() == m_limits.headerSection ? Error::HeaderSectionTooLarge : Error::Truncated);
    }
    const std::size_t rest = text.size() - section.size();
    std::size_t length = 0;
    const Error error = readLength(section, length);
    if (error == Error::NoContentLength) {
        length = rest;
    } else if (error != Error::None) {
        return failed(error);
    }
    if (isTooLarge(length, m_limits.body)) {
        return failed(Error::BodyTooLarge);
    }
    if (length > rest) {
        return failed(Error::Truncated);
    }
    return {Kind::Message, Error::None, text.substr(0, section.size() + length), input.size()};
}

/** Reads a CR or LF between messages. Returns the keep-alive that ends with it, else Incomplete. */
KxSipFramer::Kind KxSipFramer::readLineEnd(char c) {
    std::uint8_t& matched = m_progress.matched;
    matched = c == kPing[matched] ? matched + 1 : c == '\r' ? 1 : 0;
    if (matched == kPong.size() && m_progress.expectsPong) {
        matched = 0;
        m_progress.expectsPong = false;
        return Kind::Pong;
    }
    if (matched == kPing.size()) {
        matched = 0;
        return Kind::Ping;
    }
    return Kind::Incomplete;
}

/** Reads up to the end of the header section, where the state becomes Body, or of the text. The section ends at an
    empty line; a line of blanks is part of a header, as for KxSipMessageReader. Returns the number of bytes read. */
std::size_t KxSipFramer::readHeaderSection(std::string_view text) {
    State& state = m_progress.state;
    std::size_t at = 0;
    while (at != text.size() && state != State::Body) {
        if (state == State::Line) {
            at = text.find('\n', at);
            if (at == std::string_view::npos) {
                return text.size();
            }
            ++at;
            state = State::LineStart;
        } else if (text[at] == '\r') {
            ++at;
        } else if (text[at] == '\n') {
            ++at;
            state = State::Body;
        } else {
            state = State::Line;
        }
    }
    return at;
}

/** Returns the message so far with the bytes that follow it: a view of them if nothing is kept. */
std::string_view KxSipFramer::joined(std::string_view more) {
    if (m_kept.empty()) {
        return more;
    }
    m_kept.append(more);
    return m_kept;
}

KxSipFramer::Frame KxSipFramer::returned(Kind kind, Error error, std::string_view bytes, std::size_t consumed) {
    const bool expectsPong = m_progress.expectsPong;
    m_progress = {};
    m_progress.expectsPong = expectsPong;
    m_progress.error = error;
    m_isReturned = true;
    return {kind, error, bytes, consumed};
}

/** Drops the frame that was returned last. */
void KxSipFramer::release() {
    if (m_isReturned) {
        m_isReturned = false;
        m_kept.clear();
        if (m_kept.capacity() > kIdleCapacity) {
            m_kept = std::string();
        }
    }
}

void KxSipFramer::expectPong() {
    m_progress.expectsPong = true;
    m_progress.matched = 0; // a CRLF that came before the ping is not part of a keep-alive
}

void KxSipFramer::reset() {
    m_progress = {};
    m_isReturned = true;
    release();
}
