#pragma once

#include "tools/kxsip/flow/CallKey.h"
#include "tools/kxsip/flow/CallProgress.h"
#include "tools/kxsip/flow/PastMessages.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/** Sorts messages into calls by their Call-ID, those without one by their addresses, and keeps a Record of each call that
    was not returned. A Record has a default constructor, a `number` and

        void add(const ReadMessage& read, const MessageFacts& facts, std::size_t index); // the number among all messages
        void finish(); // called before the record is returned */
template <class Record>
class CallBook {
public:
    /** Adds a message, which must come from a capture. A call is returned if one of its messages is wanted. */
    void add(const ReadMessage& read, bool isWanted) {
        const MessageFacts facts(read);
        put(read, facts, isWanted);
    }

    /** As add. If the call has now ended, it is taken out of the book, and returned if one of its messages is wanted. A
        message with the same bytes as one of the last 65,536 messages that were taken out is ignored: what comes late is
        mostly a repetition. Another one begins a new call. */
    std::optional<Record> addLive(const ReadMessage& read, bool isWanted) {
        m_isLive = true;
        const std::size_t hash = PastMessages::sHashOf(read.text);
        if (m_past.contains(hash)) {
            ++m_count;
            return std::nullopt;
        }
        const MessageFacts facts(read);
        const typename Entries::iterator entry = put(read, facts, isWanted);
        entry->progress.take(read, facts);
        entry->hashes.push_back(hash);
        const bool hasEnded = !facts.callId.empty() && entry->progress.hasEnded();
        return hasEnded ? takeOut(entry) : std::nullopt;
    }

    /** Returns the other calls with a wanted message, in the order in which they began. The number of a call is its place
        in this order among all calls, 1 for the first; after addLive, its place in the order of the first messages. */
    std::vector<Record> finish() {
        m_entries.sort([](const Entry& a, const Entry& b) { return a.begin < b.begin; });
        std::vector<Record> wanted;
        std::size_t number = 0;
        for (Entry& entry : m_entries) {
            entry.record.number = m_isLive ? entry.record.number : ++number;
            if (entry.isWanted) {
                entry.record.finish();
                wanted.push_back(std::move(entry.record));
            }
        }
        m_entries.clear();
        m_index.clear();
        return wanted;
    }

private:
    struct Entry {
        Record record;
        std::string key;
        std::chrono::microseconds begin{};
        bool isWanted = false;
        CallProgress progress;           ///< These two only after addLive.
        std::vector<std::size_t> hashes; ///< Of the messages.
    };
    using Entries = std::list<Entry>;

    typename Entries::iterator put(const ReadMessage& read, const MessageFacts& facts, bool isWanted) {
        std::string key = callKeyOf(read, facts);
        const auto [known, isNew] = m_index.try_emplace(key);
        if (isNew) {
            known->second = m_entries.emplace(m_entries.end());
            known->second->key = std::move(key);
            known->second->begin = read.origin->time;
            known->second->record.number = ++m_calls;
        }
        Entry& entry = *known->second;
        entry.begin = std::min(entry.begin, read.origin->time);
        entry.isWanted = entry.isWanted || isWanted;
        entry.record.add(read, facts, m_count++);
        return known->second;
    }

    std::optional<Record> takeOut(typename Entries::iterator entry) {
        std::for_each(entry->hashes.begin(), entry->hashes.end(), [this](std::size_t hash) { m_past.remember(hash); });
        m_index.erase(entry->key);
        std::optional<Record> record;
        if (entry->isWanted) {
            entry->record.finish();
            record = std::move(entry->record);
        }
        m_entries.erase(entry);
        return record;
    }

    Entries m_entries; ///< In the order in which they were made.
    std::unordered_map<std::string, typename Entries::iterator> m_index;
    std::size_t m_count = 0; ///< Number of messages.
    std::size_t m_calls = 0; ///< Number of all calls.
    bool m_isLive = false;
    PastMessages m_past; ///< The messages that were taken out.
};
