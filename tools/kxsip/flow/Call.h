#pragma once

#include "tools/kxsip/MessageFacts.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/** A message of a ladder. */
struct Step {
    MessageFacts facts;
    Origin origin;
    std::size_t index = 0; ///< Number of the message among all that were read.
    std::string text;      ///< Its bytes.
    std::string error;     ///< Why the library refused it; empty if it did not.
    std::size_t from = 0;  ///< Index of the column.
    std::size_t to = 0;
    std::optional<std::size_t> repeats; ///< Index of the first message with the same bytes, source and destination.

    /** Returns remarks for the label: "to PRACK", "SDP", "repeats 3", "refused". */
    std::string remark() const;
};

/** A column of a ladder: a host, or a port of a host that sends to itself. */
struct Column {
    std::string name;
    std::set<std::uint16_t> ports; ///< The ports that were used; empty if the name has the port.

    /** Returns "port 5060" or "3 ports"; empty if the name has the port. */
    std::string portText() const;
};

/** All messages of one Call-ID, ordered by time. */
struct Call {
    std::string id;
    std::vector<Step> steps; ///< At least one.
    std::vector<Column> columns;

    std::chrono::microseconds begin() const { return steps.front().origin.time; }
    std::chrono::microseconds duration() const { return steps.back().origin.time - begin(); }
    /** Returns "INVITE sip:a@b > sip:c@d", with `between` between the URIs. */
    std::string title(std::string_view between = " > ") const;
    /** Returns the final response to the method of the first message, for example "486 Busy Here": the first success,
        else the last failure, else "no final response". */
    std::string result() const;
    /** Returns the status code of that response, 0 if there is none. */
    int resultCode() const;

private:
    const Step* finalResponse() const;
};

/** Sorts messages into calls by their Call-ID. */
class CallBook {
public:
    /** Adds a message, which must come from a capture. A call is drawn if one of its messages is wanted. */
    void add(const ReadMessage& read, bool isWanted);

    /** Returns the calls with a wanted message, in the order in which they began. */
    std::vector<Call> finish();

private:
    struct Entry {
        Call call;
        bool isWanted = false;
    };

    std::vector<Entry> m_entries;
    std::map<std::string, std::size_t> m_index; ///< By Call-ID.
    std::size_t m_count = 0;                    ///< Number of messages.
};

/** Returns "2026-11-21 13:22:21.935 UTC". */
std::string dateText(std::chrono::microseconds time);
/** Returns the time in seconds, "0.503". */
std::string secondsText(std::chrono::microseconds time);
