#include "tools/kxsip/MessageReader.h"

#include "sipobject/messages/KxSipFramer.h"
#include "sipobject/messages/KxSipStartLine.h"
#include "tools/kxsip/InputFile.h"
#include "tools/kxsip/Interrupt.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/capture/CaptureFile.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr std::size_t kLongestMessage = 64U << 20;
constexpr std::size_t kLongestStartLine = 65536;

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

void printNotes(const std::string& name, const MessageSource& source) {
    for (const std::string& note : source.notes()) {
        std::cerr << "kxsip: " << printable(name) << ": " << note << '\n';
    }
}

/** Adds the number of messages that were accepted to `accepted`. */
Outcome takeFile(const std::string& name, const Reading& reading, const Take& take, std::size_t& accepted) {
    Outcome worst = Outcome::Valid;
    Input input(name);
    const std::unique_ptr<MessageSource> source = MessageSource::sOpen(input, reading.keepsPackets);
    if (reading.filter != nullptr) {
        source->skipUnless([filter = reading.filter](std::string_view bytes) { return filter->mayAccept(bytes); });
    }
    while (const std::optional<ReadMessage> message = source->next()) {
        if (reading.progress != nullptr) {
            reading.progress->show(name, input.progress().done, input.progress().size);
        }
        if (reading.filter == nullptr || reading.filter->accepts(*message)) {
            ++accepted;
            worst = worse(worst, takeMessage(*message, take));
        }
    }
    if (reading.progress != nullptr) {
        reading.progress->wipe();
    }
    if (reading.isSilent) {
        return worse(worst, source->outcome());
    }
    printNotes(name, *source);
    if (const std::string text = source->passedOver(); reading.tellsPassedOver && !text.empty()) {
        std::cerr << "kxsip: " << printable(name) << ": passed over: " << text << '\n';
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
    const bool isNothingKnown = Interrupt::sHasCome() || !m_input.damage().empty();
    if (m_index > 0 || (m_input.position() == 0 && isNothingKnown)) {
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
    bool isMidLine = false; // the line here began in bytes that were passed
    std::size_t scanned = 0;
    while (true) {
        const std::size_t end = here().find('\n', scanned);
        scanned = here().size();
        if (end == std::string_view::npos && scanned > kLongestStartLine) {
            pass(scanned);
            scanned = 0;
            isMidLine = true;
        }
        if (end == std::string_view::npos && m_input.more()) {
            continue;
        }
        const std::size_t length = endOfLine(here(), std::min(end, scanned));
        if (length == 0 || (!isMidLine && KxSipStartLine::sIsLikely(here().substr(0, length)))) {
            return;
        }
        pass(length);
        scanned = 0;
        isMidLine = false;
    }
}

/** Waits for the end of the header section, and returns it. The framer finds it; the length of the body is left to the
    parser. */
std::size_t MessageReader::fetchHeaderSection() {
    KxSipFramer framer(KxSipFramer::Mode::Stream, {kLongestMessage, 0});
    std::size_t framed = 0;
    KxSipFramer::Frame frame;
    do {
        frame = framer.next(here().substr(framed));
        framed += frame.consumed;
    } while (frame.kind == KxSipFramer::Kind::Incomplete && m_input.more());
    return framed;
}

/** Returns the offset of the next start line in the header section of the last refused message, 0 if there is none. */
std::size_t MessageReader::endWithinRefused() const {
    if (m_refusedEnd <= m_input.position()) {
        return 0;
    }
    const std::string_view rest = here().substr(0, m_refusedEnd - m_input.position());
    const std::size_t next = KxSipStartLine::sFind(rest, endOfLine(rest, 0));
    return next < rest.size() ? next : 0;
}

/** Returns how many bytes the message lacks at least, 0 if no further byte can change it. Its header section must be
    here. `taken` is the number of bytes that were read. */
std::size_t MessageReader::missing(const ReadMessage& read, std::size_t taken) const {
    const std::size_t size = here().size();
    if (m_input.isEnded() || size >= kLongestMessage) {
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
    if (const std::size_t end = endWithinRefused(); end > 0) {
        return read.parse(here().substr(0, end));
    }
    const std::size_t headerSection = fetchHeaderSection();
    std::size_t taken = parseOnce(read, headerSection);
    while (const std::size_t lacking = missing(read, taken)) {
        const std::size_t wanted = std::min(here().size() + lacking, kLongestMessage);
        while (here().size() < wanted && m_input.more()) {
        }
        read = ReadMessage();
        taken = read.parse(here());
    }
    if (read.isRefused()) {
        m_refusedEnd = m_input.position() + headerSection;
        m_shortEnd = read.isIncomplete ? m_input.position() + here().size() : m_shortEnd;
    }
    return taken;
}

/** Parses what is here. After a message whose body was too short, the next ones lie in what there was of the body. For
    each that is too short as well, the header section shows it, so that the rest is not read for each of them. */
std::size_t MessageReader::parseOnce(ReadMessage& read, std::size_t headerSection) const {
    if (m_input.position() < m_shortEnd) {
        const std::size_t taken = read.parse(here().substr(0, headerSection));
        const bool hasBody = read.isIncomplete && !read.salvaged.isNil();
        if (hasBody && taken + read.salvaged->getBodyLength() > here().size()) {
            return taken;
        }
        read = ReadMessage();
    }
    return read.parse(here());
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

std::vector<std::string> MessageReader::notes() const {
    if (m_input.damage().empty()) {
        return {};
    }
    return {m_input.damage() + "; what comes before it was read"};
}

Outcome MessageReader::outcome() const {
    return m_input.damage().empty() ? Outcome::Valid : Outcome::Failed;
}

namespace {

/** Prints the reason why the file has no message of this number. */
Outcome tellMissing(const std::string& file, std::size_t number, const MessageSource& source) {
    printNotes(file, source);
    if (source.outcome() == Outcome::Refused) { // it has no messages at all, as the notes say
        return Outcome::Refused;
    }
    std::cerr << "kxsip: " << printable(file) << " has no message " << number << '\n';
    return Outcome::Failed;
}

/** Calls a function that reads the file. If it can't be read, reports this on standard error, unless `isSilent`. */
Outcome guarded(const std::string& file, const std::function<Outcome()>& read, bool isSilent = false) {
    try {
        return read();
    } catch (const std::system_error& error) {
        if (!isSilent) {
            complainOfFile(file, error);
        }
    } catch (const CaptureError& error) {
        if (!isSilent) {
            std::cerr << "kxsip: " << error.what() << '\n';
        }
    }
    return Outcome::Failed;
}

} // namespace

Outcome withMessage(const std::string& file, std::size_t number,
                    const std::function<Outcome(const ReadMessage&)>& use) {
    const Interrupt interrupt;
    return guarded(file, [&] {
        Input input(file);
        const std::unique_ptr<MessageSource> source = MessageSource::sOpen(input);
        while (const std::optional<ReadMessage> read = source->next()) {
            if (read->index == number) {
                return use(*read);
            }
        }
        return tellMissing(file, number, *source);
    });
}

Outcome forEachMessage(const Reading& reading, const Take& take) {
    const Interrupt interrupt;
    Outcome worst = Outcome::Valid;
    std::size_t accepted = 0;
    for (const std::string& name : reading.files.empty() ? std::vector<std::string>{"-"} : reading.files) {
        if (Interrupt::sHasCome()) {
            break;
        }
        worst = worse(worst, guarded(
                                 name, [&] { return takeFile(name, reading, take, accepted); }, reading.isSilent));
    }
    return reading.filter == nullptr ? worst : worse(worst, reading.filter->outcome(accepted > 0));
}
