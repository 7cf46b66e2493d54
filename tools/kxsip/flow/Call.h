#pragma once

#include "tools/kxsip/MessageFacts.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/** A message as a ladder shows it. */
struct Step {
    MessageFacts facts;
    Origin origin;
    std::size_t index = 0; ///< Of the message among all that were read.
    std::string text;      ///< Its bytes.
    std::string error;     ///< Why the library refused it; empty where it did not.
    std::size_t from = 0;  ///< Columns.
    std::size_t to = 0;
    std::optional<std::size_t> repeats; ///< The index of the message with the same bytes and the same way.

    /** What else a reader wants to see beside the label: "to PRACK", "SDP", "repeats 3", "refused". */
    std::string remark() const;
};

/** A column of a ladder: a host, or a port of one that talks to itself. */
struct Column {
    std::string name;
    std::set<std::uint16_t> ports; ///< That were used; empty where the name has the port.

    /** "port 5060", "3 ports"; empty where the name says it. */
    std::string portText() const;
};

/** All messages of one Call-ID, in the order of their times. */
struct Call {
    std::string id;
    std::vector<Step> steps; ///< One at least.
    std::vector<Column> columns;

    std::chrono::microseconds begin() const { return steps.front().origin.time; }
    std::chrono::microseconds duration() const { return steps.back().origin.time - begin(); }
    /** "INVITE sip:a@b > sip:c@d", with that text between the two. */
    std::string title(std::string_view between = " > ") const;
    /** What the first request's method came to: its first success, else its last failure, "486 Busy Here"; "no final
        response" where there is none. */
    std::string result() const;
    /** Its code; 0 where there is none. */
    int resultCode() const;

private:
    const Step* finalResponse() const;
};

/** Sorts messages into calls. */
class CallBook {
public:
    /** The message must come from a capture. */
    void add(const ReadMessage& read, bool isWanted);

    /** The calls with a wanted message, in the order in which they began. */
    std::vector<Call> finish();

private:
    struct Entry {
        Call call;
        bool isWanted = false;
    };

    std::vector<Entry> m_entries;
    std::map<std::string, std::size_t> m_index; ///< By Call-ID.
    std::size_t m_count = 0;                    ///< Messages.
};

/** "2026-11-21 13:22:21.935 UTC". */
std::string dateText(std::chrono::microseconds time);
/** "0.503": seconds. */
std::string secondsText(std::chrono::microseconds time);
