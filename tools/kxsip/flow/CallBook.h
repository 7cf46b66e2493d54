#pragma once

#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/CallProgress.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <list>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

/** Sorts messages into calls by their Call-ID. Keeps the messages of all calls that were not returned. */
class CallBook {
public:
    /** Adds a message, which must come from a capture. A call is drawn if one of its messages is wanted. */
    void add(const ReadMessage& read, bool isWanted);

    /** As add. If the call has now ended, it is taken out of the book; so are calls that may never end: those without a
        message for two hours before this one, and this one if it has 10,000 messages. Returns those of them of which a
        message is wanted. A message with the same bytes as one of the last 65,536 messages that were taken out is
        ignored: what comes late is mostly a repetition. Another one begins a new call. */
    std::vector<Call> addLive(const ReadMessage& read, bool isWanted);

    /** Returns the other calls with a wanted message, in the order in which they began. */
    std::vector<Call> finish();

private:
    struct Entry {
        Call call;
        bool isWanted = false;
        CallProgress progress;
        std::chrono::microseconds last{}; ///< Time of its last message.
    };
    using Entries = std::list<Entry>;

    Entries::iterator put(const ReadMessage& read, bool isWanted);
    void takeOut(Entries::iterator entry, std::vector<Call>& calls);
    void takeOutSilent(std::chrono::microseconds now, std::vector<Call>& calls);
    void remember(const std::string& text);

    Entries m_entries;                                ///< In the order of their last messages.
    std::map<std::string, Entries::iterator> m_index; ///< By Call-ID.
    std::size_t m_count = 0;                          ///< Number of messages.
    std::unordered_set<std::size_t> m_past;           ///< Hash values of the messages that were taken out.
    std::deque<std::size_t> m_pastOrder;
};
