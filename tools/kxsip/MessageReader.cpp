#include "tools/kxsip/MessageReader.h"

#include "tools/kxsip/StartLine.h"
#include "util/KxByteArrayInputStream.h"

#include <algorithm>

namespace {

/** Where the line behind the one at `position` begins. */
std::size_t behindLine(std::string_view bytes, std::size_t position) {
    const std::size_t end = bytes.find('\n', position);
    return end == std::string_view::npos ? bytes.size() : end + 1;
}

/** Where the first line at or behind `position` that looks like a start line begins; the end where there is none. */
std::size_t findStartLine(std::string_view bytes, std::size_t position) {
    while (position < bytes.size()) {
        const std::size_t behind = behindLine(bytes, position);
        if (looksLikeStartLine(bytes.substr(position, behind - position))) {
            break;
        }
        position = behind;
    }
    return position;
}

Outcome takeFile(const InputFile& file, const std::function<void(const ReadMessage&)>& take) {
    Outcome worst = Outcome::Valid;
    MessageReader reader(file);
    while (const std::optional<ReadMessage> message = reader.next()) {
        worst = worse(worst, message->outcome());
        try {
            take(*message);
        } catch (const KxHandle<KxException>& why) {
            message->complain(*why);
            worst = worse(worst, Outcome::Refused);
        }
    }
    return worst;
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

ReadMessage MessageReader::readHere() {
    ReadMessage read;
    read.file = m_name;
    read.index = m_index++;
    KxByteArrayInputStream in(m_bytes.substr(m_position));
    try {
        read.message = KxSipMessage::sConstructFrom(in);
        m_position = m_bytes.size() - in.available();
    } catch (const KxHandle<KxException>& error) {
        read.error = error;
        const std::size_t stopped = m_bytes.size() - in.available();
        m_position = findStartLine(m_bytes, std::max(stopped, behindLine(m_bytes, m_position)));
    }
    read.unread = m_bytes.size() - m_position;
    return read;
}

std::optional<ReadMessage> readMessage(const InputFile& file, std::size_t number) {
    MessageReader reader(file);
    std::optional<ReadMessage> read = reader.next();
    while (read && read->index < number) {
        read = reader.next();
    }
    return read;
}

Outcome forEachMessage(const std::vector<std::string>& files, const std::function<void(const ReadMessage&)>& take) {
    Outcome worst = Outcome::Valid;
    for (const std::string& name : files.empty() ? std::vector<std::string>{"-"} : files) {
        try {
            worst = worse(worst, takeFile(InputFile::sRead(name), take));
        } catch (const std::system_error& error) {
            complainOfFile(name, error);
            worst = Outcome::Failed;
        }
    }
    return worst;
}
