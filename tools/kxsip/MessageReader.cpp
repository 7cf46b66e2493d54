#include "tools/kxsip/MessageReader.h"

#include "sipobject/messages/KxSipFramer.h"
#include "sipobject/messages/KxSipStartLine.h"
#include "tools/kxsip/Interrupt.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/capture/CaptureFile.h"

#include <algorithm>
#include <iostream>
#include <limits>

namespace {

/** Returns the beginning of the line after the one at `position`. */
std::size_t endOfLine(std::string_view bytes, std::size_t position) {
    const std::size_t end = bytes.find('\n', position);
    return end == std::string_view::npos ? bytes.size() : end + 1;
}

using Take = std::function<void(const ReadMessage&)>;

Outcome takeMessage(const ReadMessage& message, const Take& take) {
    try {
        take(message);
    } catch (const KxHandle<KxException>& why) {
        message.complain(*why);
        return Outcome::Refused;
    }
    return message.outcome();
}

/** Adds the number of messages that were accepted to `accepted`. */
Outcome takeFile(const std::string& name, const Reading& reading, const Take& take, std::size_t& accepted) {
    Outcome worst = Outcome::Valid;
    Input input(name);
    const std::unique_ptr<MessageSource> source = MessageSource::sOpen(input, reading.keepsPackets);
    while (const std::optional<ReadMessage> message = source->next()) {
        if (reading.progress != nullptr) {
            reading.progress->show(name, input.position(), input.size());
        }
        if (reading.filter == nullptr || reading.filter->accepts(*message)) {
            ++accepted;
            worst = worse(worst, takeMessage(*message, take));
        }
    }
    if (reading.progress != nullptr) {
        reading.progress->wipe();
    }
    for (const std::string& note : reading.isSilent ? std::vector<std::string>() : source->notes()) {
        std::cerr << "kxsip: " << printable(name) << ": " << note << '\n';
    }
    return worse(worst, source->outcome());
}

} // namespace

std::optional<ReadMessage> MessageReader::next() {
    if (m_isLost) {
        findStartLine();
    }
    skipLineEnds();
    if (!here().empty()) {
        return readHere();
    }
    if (m_index > 0 || (m_input.position() == 0 && Interrupt::sHasCome())) {
        return std::nullopt;
    }
    return readNothing();
}

void MessageReader::skipLineEnds() {
    do {
        pass(std::min(here().find_first_not_of("\r\n"), here().size()));
    } while (here().empty() && m_input.more());
}

/** Passes over the lines before one that looks like a start line. */
void MessageReader::findStartLine() {
    m_isLost = false;
    std::size_t scanned = 0;
    while (true) {
        const std::size_t end = here().find('\n', scanned);
        scanned = here().size();
        if (end == std::string_view::npos && m_input.more()) {
            continue;
        }
        const std::size_t length = endOfLine(here(), std::min(end, scanned));
        if (length == 0 || KxSipStartLine::sIsLikely(here().substr(0, length))) {
            return;
        }
        pass(length);
        scanned = 0;
    }
}

/** Waits for the end of the header section. The framer finds it; the length of the body is left to the parser. */
void MessageReader::fetchHeaderSection() {
    KxSipFramer framer(KxSipFramer::Mode::Stream, {std::numeric_limits<std::size_t>::max(), 0});
    std::size_t framed = 0;
    KxSipFramer::Frame frame;
    do {
        frame = framer.next(here().substr(framed));
        framed += frame.consumed;
    } while (frame.kind == KxSipFramer::Kind::Incomplete && m_input.more());
}

/** Returns how many bytes the message lacks at least, 0 if no further byte can change it. Its header section must be
    here. `taken` is the number of bytes that were read. */
std::size_t MessageReader::missing(const ReadMessage& read, std::size_t taken) const {
    const std::size_t size = here().size();
    if (m_input.isEnded()) {
        return 0;
    }
    if (read.isIncomplete && !read.salvaged.isNil()) {
        const std::size_t end = taken + read.salvaged->getBodyLength();
        return end - std::min(end, size);
    }
    if (taken < size) {
        return 0;
    }
    ReadMessage further; // shows whether the message ends here, or goes on for want of a Content-Length
    const bool isSame = further.parse(std::string(here()) + 'x') == taken && further.isRefused() == read.isRefused();
    return isSame ? 0 : size; // not less, so that the number of attempts is small
}

/** Parses the message when all of it is here. Returns the number of bytes that were read. */
std::size_t MessageReader::parseHere(ReadMessage& read) {
    fetchHeaderSection();
    std::size_t taken = read.parse(here());
    while (const std::size_t lacking = missing(read, taken)) {
        const std::size_t wanted = here().size() + lacking;
        while (here().size() < wanted && m_input.more()) {
        }
        read = ReadMessage();
        taken = read.parse(here());
    }
    return taken;
}

ReadMessage MessageReader::readHere() {
    ReadMessage read;
    std::size_t taken = parseHere(read);
    read.file = m_input.name();
    read.isLive = m_input.isLive();
    read.index = m_index++;
    read.line = m_line;
    if (read.isRefused()) {
        taken = std::max(taken, endOfLine(here(), 0));
        m_isLost = true;
    }
    read.text = here().substr(0, taken);
    pass(taken);
    if (const std::optional<std::size_t> size = m_input.size()) {
        if (m_isLost) {
            findStartLine();
        }
        read.unread = *size - std::min(m_input.position(), *size);
    }
    return read;
}

/** Returns the message of an input that has none: a keep-alive, or nothing at all. */
ReadMessage MessageReader::readNothing() {
    ReadMessage read;
    read.parse(m_input.position() > 0 ? "\r\n" : "");
    read.file = m_input.name();
    read.isLive = m_input.isLive();
    read.index = m_index++;
    read.line = 1;
    if (!read.isLive) {
        read.unread = 0;
    }
    return read;
}

void MessageReader::pass(std::size_t count) {
    const std::string_view passed = here().substr(0, count);
    m_line += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
    m_input.drop(count);
}

std::optional<ReadMessage> readMessage(const InputFile& file, std::size_t number) {
    Input input(file);
    const std::unique_ptr<MessageSource> source = MessageSource::sOpen(input);
    std::optional<ReadMessage> read = source->next();
    while (read && read->index < number) {
        read = source->next();
    }
    return read;
}

Outcome forEachMessage(const Reading& reading, const Take& take) {
    const Interrupt interrupt;
    Outcome worst = Outcome::Valid;
    std::size_t accepted = 0;
    for (const std::string& name : reading.files.empty() ? std::vector<std::string>{"-"} : reading.files) {
        if (Interrupt::sHasCome()) {
            break;
        }
        try {
            worst = worse(worst, takeFile(name, reading, take, accepted));
        } catch (const std::system_error& error) {
            worst = Outcome::Failed;
            if (!reading.isSilent) {
                complainOfFile(name, error);
            }
        } catch (const CaptureError& error) {
            worst = Outcome::Failed;
            if (!reading.isSilent) {
                std::cerr << "kxsip: " << error.what() << '\n';
            }
        }
    }
    return reading.filter == nullptr ? worst : worse(worst, reading.filter->outcome(accepted > 0));
}
