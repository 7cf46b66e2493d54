#pragma once

#include "tools/kxsip/InputFile.h"
#include "tools/kxsip/ReadMessage.h"

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

/** Takes the messages out of a file that holds several, one behind the other. Where one begins:

    - Line ends in front of a message are skipped [RFC 3261 7.5]; a file that holds nothing else is read as it is.
    - Behind a message that was read, with its body, the next one begins at once, whatever stands there.
    - Behind one that was refused the next begins at a line that looks like a start line: not in the refused message's
      own first line, and not in front of the place where reading stopped. */
class MessageReader {
public:
    /** The file must outlive the reader. */
    explicit MessageReader(const InputFile& file) : m_name(file.name), m_bytes(file.bytes) {}

    /** The next message; nothing at the end. A file always gives one. */
    std::optional<ReadMessage> next();

private:
    ReadMessage readHere();

    std::string_view m_name;
    std::string_view m_bytes;
    std::size_t m_position = 0;
    std::size_t m_index = 0;
};

/** The message of that number, 0 for the first; nothing where there are not so many. */
std::optional<ReadMessage> readMessage(const InputFile& file, std::size_t number);

/** Hands on every message of the files, of standard input where there are none. Says on standard error which file can't
    be read and what could not be done with a message (where `take` throws a KxException), and goes on. Returns the worst
    outcome. */
Outcome forEachMessage(const std::vector<std::string>& files, const std::function<void(const ReadMessage&)>& take);
