#pragma once

#include "tools/kxsip/flow/Call.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

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
