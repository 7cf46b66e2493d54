#pragma once

#include "tools/kxsip/MessageSource.h"

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

class MessageFilter;
class Progress;

/** Reads the messages of a file that has several, one after the other. A message begins as follows:

    - Line ends before a message are skipped [RFC 3261 7.5]; a file with nothing else is parsed unchanged.
    - After a message that was read, with its body, the next one begins immediately, whatever the bytes there are.
    - After a refused message the next one begins at a line that looks like a start line. This line is neither the first
      line of the refused message nor before the position where parsing stopped. */
class MessageReader final : public MessageSource {
public:
    /** The file must outlive the reader. */
    explicit MessageReader(const InputFile& file) : m_name(file.name), m_bytes(file.bytes) {}

    /** Returns the next message, or nothing at the end. Every file has at least one. */
    std::optional<ReadMessage> next() override;
    std::size_t position() const override { return m_position; }

private:
    ReadMessage readHere();
    std::size_t lineHere();

    std::string_view m_name;
    std::string_view m_bytes;
    std::size_t m_position = 0;
    std::size_t m_index = 0;
    std::size_t m_line = 1;        ///< The line number at m_lineCounted.
    std::size_t m_lineCounted = 0; ///< The position up to which lines are counted.
};

/** Returns the message with this number, 0 for the first, or nothing if the file has fewer messages. */
std::optional<ReadMessage> readMessage(const InputFile& file, std::size_t number);

/** The files to read, and a filter for their messages. */
struct Reading {
    std::vector<std::string> files;        ///< If empty, standard input is read.
    const MessageFilter* filter = nullptr; ///< Null for all messages.
    Progress* progress = nullptr;          ///< Null if no progress is shown.
};

/** Calls `take` with every message of the files that the filter accepts. If a file can't be read, or `take` throws a
    KxException, this is reported on standard error, and reading continues. Returns the worst outcome. */
Outcome forEachMessage(const Reading& reading, const std::function<void(const ReadMessage&)>& take);
