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
      line of the refused message nor before the position where parsing stopped.

    A message is returned as soon as no further byte can change it: with the last byte of its body, or with the end of
    its header section if it is refused for that. Keeps one message at a time, and what follows it in the last block.

    Of a message, 64 MiB are read at most. Between start lines without an empty line, after a message that was refused,
    each message ends before the next start line; so the time is in proportion to the number of bytes. */
class MessageReader final : public MessageSource {
public:
    /** The input must outlive the reader. */
    explicit MessageReader(Input& input) : m_input(input) {}

    /** Returns the next message, or nothing at the end. Every input has at least one, unless
        it was interrupted before its first byte. */
    std::optional<ReadMessage> next() override;
    std::vector<std::string> notes() const override;
    Outcome outcome() const override;

private:
    void skipLineEnds();
    void findStartLine();
    std::size_t fetchHeaderSection();
    std::size_t endWithinRefused() const;
    std::size_t missing(const ReadMessage& read, std::size_t taken) const;
    std::size_t parseHere(ReadMessage& read);
    std::size_t parseOnce(ReadMessage& read, std::size_t headerSection) const;
    ReadMessage readHere();
    ReadMessage readNothing();
    void pass(std::size_t count);
    std::string_view here() const { return m_input.bytes(); }

    Input& m_input;
    std::size_t m_index = 0;
    std::size_t m_line = 1;       ///< The line number here.
    bool m_isLost = false;        ///< Whether the next start line must be found, since a message was refused.
    std::size_t m_refusedEnd = 0; ///< Position of the end of the header section of the last refused message.
    std::size_t m_shortEnd = 0;   ///< Position of the end of the last body that was too short.
};

/** Calls `use` with the message of this number, 0 for the first, and returns its outcome. If the file can't be read or
    has fewer messages, this is reported on standard error. */
Outcome withMessage(const std::string& file, std::size_t number, const std::function<Outcome(const ReadMessage&)>& use);

/** The files to read, and a filter for their messages. */
struct Reading {
    std::vector<std::string> files;        ///< If empty, standard input is read.
    const MessageFilter* filter = nullptr; ///< Null for all messages.
    Progress* progress = nullptr;          ///< Null if no progress is shown.
    bool keepsPackets = false;             ///< Whether the messages get their packets; needs captures.
    bool tellsPassedOver = false;          ///< Whether a note says what was passed over since it is no SIP.
    bool isSilent = false;                 ///< Whether nothing is reported, since the files are read again.
};

/** Calls `take` with every message of the files that the filter accepts. If a file can't be read, or `take` throws a
    KxException, this is reported on standard error, and reading continues. Also reports that nothing was accepted. Returns
    the worst outcome. */
Outcome forEachMessage(const Reading& reading, const std::function<void(const ReadMessage&)>& take);
