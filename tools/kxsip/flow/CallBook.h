#pragma once

#include "tools/kxsip/flow/CallKey.h"
#include "tools/kxsip/flow/CallProgress.h"
#include "tools/kxsip/flow/PastMessages.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

/** Sorts messages into calls by their Call-ID, those without one by their addresses, and keeps a Record of each call that
    was not returned. A Record has a default constructor, a `number` and

        void add(const ReadMessage& read, const MessageFacts& facts, std::size_t index); // the number among all messages
        void finish();                        // called before the record is returned
        void cutOff(const std::string& why);  // called before finish for a call that has not ended */
template <class Record>
class CallBook {
public:
    /** Adds a message, which must come from a capture. A call is returned if one of its messages is wanted. */
    void add(const ReadMessage& read, bool isWanted) {
        const MessageFacts facts(read);
        put(read, facts, isWanted);
    }

    /** For a message of a call that is not wanted and need not be kept: only counts it. */
    void skip() { ++m_count; }

    /** As add. If the call has now ended, it is taken out of the book; so are calls that may never end: those without a
        message for two hours before this one, and this one if it has 10,000 messages. Returns those of them of which a
        message is wanted. A message with the same bytes as one of the last 65,536 messages that were taken out is
        ignored: what comes late is mostly a repetition. Another one begins a new call. */
    std::vector<Record> addLive(const ReadMessage& read, bool isWanted) {
        std::vector<Record> records;
        m_isLive = true;
        takeOutSilent(read.origin->time, records);
        const std::size_t hash = PastMessages::sHashOf(read.text);
        if (m_past.contains(hash)) {
            ++m_count;
            return records;
        }
        const MessageFacts facts(read);
        const Place entry = put(read, facts, isWanted);
        entry->progress.take(read, facts);
        entry->hashes.push_back(hash);
        const bool hasEnded = !facts.callId.empty() && entry->progress.hasEnded();
        const bool isFull = entry->hashes.size() >= kMostMessages;
        if (isFull && !hasEnded) {
            entry->record.cutOff("it has " + std::to_string(kMostMessages) + " messages");
        }
        if (hasEnded || isFull) {
            takeOut(entry, records);
        }
        return records;
    }

    /** Returns the other calls with a wanted message, in the order in which they began. The number of a call is its place
        in this order among all calls, 1 for the first; after addLive, its place in the order of the first messages. */
    std::vector<Record> finish() {
        m_entries.sort([](const Entry& a, const Entry& b) {
            return std::tie(a.begin, a.record.number) < std::tie(b.begin, b.record.number);
        });
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
    using Time = std::chrono::microseconds;
    struct Entry {
        Record record;
        std::string key;
        Time begin{}; ///< The times of its first and last message.
        Time last{};
        bool isWanted = false;
        CallProgress progress;           ///< These two only after addLive.
        std::vector<std::size_t> hashes; ///< Of the messages.
    };
    using Place = typename std::list<Entry>::iterator;

    static constexpr std::size_t kMostMessages = 10000; // of a live call
    /// More than twice the default time between session refreshes [RFC 4028 4.2], and than common times of subscriptions.
    static constexpr std::chrono::hours kMostSilence{2};

    Place put(const ReadMessage& read, const MessageFacts& facts, bool isWanted) {
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
        entry.last = read.origin->time;
        entry.isWanted = entry.isWanted || isWanted;
        entry.record.add(read, facts, m_count++);
        m_entries.splice(m_entries.end(), m_entries, known->second);
        return known->second;
    }

    void takeOutSilent(Time now, std::vector<Record>& records) {
        while (!m_entries.empty() && now - m_entries.front().last > kMostSilence) {
            m_entries.front().record.cutOff("no message for " + std::to_string(kMostSilence.count()) + " hours");
            takeOut(m_entries.begin(), records);
        }
    }

    void takeOut(Place entry, std::vector<Record>& records) {
        std::for_each(entry->hashes.begin(), entry->hashes.end(), [this](std::size_t hash) { m_past.remember(hash); });
        m_index.erase(entry->key);
        if (entry->isWanted) {
            entry->record.finish();
            records.push_back(std::move(entry->record));
        }
        m_entries.erase(entry);
    }

    std::list<Entry> m_entries; ///< In the order of their last messages.
    std::unordered_map<std::string, Place> m_index;
    std::size_t m_count = 0; ///< Number of messages.
    std::size_t m_calls = 0; ///< Number of all calls.
    bool m_isLive = false;
    PastMessages m_past; ///< The messages that were taken out.
};
