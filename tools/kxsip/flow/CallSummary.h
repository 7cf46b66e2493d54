#pragma once

#include "tools/kxsip/MessageFacts.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** What is known of a call without its messages; a record of a CallBook. Its size has a bound, whatever the number of
    messages. */
struct CallSummary {
    using Time = std::chrono::microseconds; ///< Since 1970.

    std::size_t number = 0; ///< See CallBook.
    std::string id;         ///< The Call-ID; empty for messages without one.
    std::string from;       ///< The URIs and the method of the first message.
    std::string to;
    std::string method;
    int code = 0; ///< Of the final response to this method: the first success, else the last failure; 0 for none.
    Time begin{};
    std::optional<Time> ringing;  ///< The first 18x to this method.
    std::optional<Time> answered; ///< The first 2xx to this method.
    std::optional<Time> hungUp;   ///< The first BYE.
    std::size_t messages = 0;
    /** Messages with the same bytes, source and destination as one of the 256 messages of the call before it. */
    std::size_t repeats = 0;

    void add(const ReadMessage& read, const MessageFacts& facts, std::size_t index);
    void finish() { m_latest = {}; }
    void cutOff(const std::string&) {}

    /** From the answer to the BYE; nothing unless an INVITE was answered. */
    std::optional<Time> duration() const;
    /** From the beginning. */
    std::optional<Time> timeToRing() const { return since(ringing); }
    std::optional<Time> timeToAnswer() const { return since(answered); }

private:
    void takeFinal(int status, Time time);
    void countRepeat(const ReadMessage& read);
    std::optional<Time> since(const std::optional<Time>& time) const;

    std::vector<std::uint64_t> m_latest; ///< Hash values of the last messages.
};
