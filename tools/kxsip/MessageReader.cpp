#include "tools/kxsip/MessageReader.h"

#include "sipobject/messages/KxSipStartLine.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/capture/CaptureFile.h"

#include <algorithm>
#include <iostream>

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

Outcome takeFile(const InputFile& file, const Reading& reading, const Take& take) {
    Outcome worst = Outcome::Valid;
    const std::unique_ptr<MessageSource> source = MessageSource::sOpen(file);
    while (const std::optional<ReadMessage> message = source->next()) {
        if (reading.progress != nullptr) {
            reading.progress->show(file.name, source->position(), file.bytes.size());
        }
        if (reading.filter == nullptr || reading.filter->accepts(*message)) {
            worst = worse(worst, takeMessage(*message, take));
        }
    }
    if (reading.progress != nullptr) {
        reading.progress->wipe();
    }
    for (const std::string& note : source->notes()) {
        std::cerr << "kxsip: " << printable(file.name) << ": " << note << '\n';
    }
    return worse(worst, source->outcome());
}

} // namespace

std::optional<ReadMessage> MessageReader::next() {
    const std::size_t start = m_bytes.find_first_not_of("\r\n", m_position);
    if (start != std::string_view::npos) {
        m_position = start;
    } else if (m_index > 0) {
        return std::nullopt;
    }
    return readHere();
}

/** Returns the number of the current line. Each line end is counted only once, not again for each message. */
std::size_t MessageReader::lineHere() {
    const std::string_view passed = m_bytes.substr(m_lineCounted, m_position - m_lineCounted);
    m_line += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
    m_lineCounted = m_position;
    return m_line;
}

ReadMessage MessageReader::readHere() {
    ReadMessage read;
    read.file = m_name;
    read.index = m_index++;
    read.line = lineHere();
    const std::size_t begin = m_position;
    m_position += read.parse(m_bytes.substr(begin));
    if (read.isRefused()) {
        m_position = KxSipStartLine::sFind(m_bytes, std::max(m_position, endOfLine(m_bytes, begin)));
    }
    read.text = m_bytes.substr(begin, m_position - begin);
    read.unread = m_bytes.size() - m_position;
    return read;
}

std::optional<ReadMessage> readMessage(const InputFile& file, std::size_t number) {
    const std::unique_ptr<MessageSource> source = MessageSource::sOpen(file);
    std::optional<ReadMessage> read = source->next();
    while (read && read->index < number) {
        read = source->next();
    }
    return read;
}

Outcome forEachMessage(const Reading& reading, const Take& take) {
    Outcome worst = Outcome::Valid;
    for (const std::string& name : reading.files.empty() ? std::vector<std::string>{"-"} : reading.files) {
        try {
            worst = worse(worst, takeFile(InputFile::sRead(name), reading, take));
        } catch (const std::system_error& error) {
            complainOfFile(name, error);
            worst = Outcome::Failed;
        } catch (const CaptureError& error) {
            std::cerr << "kxsip: " << error.what() << '\n';
            worst = Outcome::Failed;
        }
    }
    return worst;
}
