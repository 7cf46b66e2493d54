#pragma once

#include "tools/kxsip/MessageSource.h"

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

class MessageFilter;
class Progress;

/** Takes the messages out of a file that holds several, one behind the other. Where one begins:

    - Line ends in front of a message are skipped [RFC 3261 7.5]; a file that holds nothing else is read as it is.
    - Behind a message that was read, with its body, the next one begins at once, whatever stands there.
    - Behind one that was refused the next begins at a line that looks like a start line: not in the refused message's
      own first line, and not in front of the place where reading stopped. */
class MessageReader final : public MessageSource {
public:
    /** The file must outlive the reader. */
    explicit MessageReader(const InputFile& file) : m_name(file.name), m_bytes(file.bytes) {}

    /** The next message; nothing at the end. A file always gives one. */
    std::optional<ReadMessage> next() override;
    std::size_t position() const override { return m_position; }

private:
    ReadMessage readHere();
    std::size_t lineHere();

    std::string_view m_name;
    std::string_view m_bytes;
    std::size_t m_position = 0;
    std::size_t m_index = 0;
    std::size_t m_line = 1;        ///< Of the place up to which lines are counted.
    std::size_t m_lineCounted = 0; ///< That place.
};

/** The message of that number, 0 for the first; nothing where there are not so many. */
std::optional<ReadMessage> readMessage(const InputFile& file, std::size_t number);

/** What to read, and which of it. */
struct Reading {
    std::vector<std::string> files;        ///< Standard input where there are none.
    const MessageFilter* filter = nullptr; ///< Nil for all messages.
    Progress* progress = nullptr;          ///< Nil where nobody wants to know.
};

/** Hands on every message of the files that the filter accepts. Says on standard error which file can't be read and what
    could not be done with a message (where `take` throws a KxException), and goes on. Returns the worst outcome. */
Outcome forEachMessage(const Reading& reading, const std::function<void(const ReadMessage&)>& take);
