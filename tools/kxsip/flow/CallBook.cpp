#include "tools/kxsip/flow/CallBook.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <tuple>

namespace {

constexpr std::size_t kMostPast = 65536;
constexpr std::size_t kMostMessages = 10000; // of a live call
/// More than twice the default time between session refreshes [RFC 4028 4.2], and than common times of subscriptions.
constexpr std::chrono::hours kMostSilence(2);

/** Each host is a column; a host that sends to itself has a column for each port. */
void findColumns(Call& call) {
    std::set<std::string> loops;
    for (const Step& step : call.steps) {
        if (step.origin.source.address == step.origin.destination.address) {
            loops.insert(step.origin.source.address);
        }
    }
    std::map<std::string, std::size_t> known;
    const auto columnOf = [&](const Endpoint& end) {
        const bool isSplit = loops.contains(end.address);
        const auto [found, isNew] = known.emplace(isSplit ? end.text() : end.address, call.columns.size());
        if (isNew) {
            call.columns.push_back({found->first, {}});
        }
        if (!isSplit) {
            call.columns[found->second].ports.insert(end.port);
        }
        return found->second;
    };
    for (Step& step : call.steps) {
        step.from = columnOf(step.origin.source);
        step.to = columnOf(step.origin.destination);
    }
}

void findRepeats(Call& call) {
    std::map<std::tuple<Endpoint, Endpoint, std::string_view>, std::size_t> first;
    for (Step& step : call.steps) {
        const auto [known, isNew] = first.emplace(
            std::tuple(step.origin.source, step.origin.destination, std::string_view(step.text)), step.index);
        if (!isNew) {
            step.repeats = known->second;
        }
    }
}

void order(Call& call) {
    std::sort(call.steps.begin(), call.steps.end(), [](const Step& a, const Step& b) {
        return std::tie(a.origin.time, a.index) < std::tie(b.origin.time, b.index);
    });
    findColumns(call);
    findRepeats(call);
}

} // namespace

CallBook::Entries::iterator CallBook::put(const ReadMessage& read, bool isWanted) {
    MessageFacts facts(read);
    const auto [known, isNew] = m_index.emplace(facts.callId, m_entries.end());
    if (isNew) {
        known->second = m_entries.insert(m_entries.end(), Entry{{facts.callId, {}, {}, {}}, false, {}, {}});
    }
    Entry& entry = *known->second;
    entry.isWanted = entry.isWanted || isWanted;
    entry.progress.take(read, facts);
    entry.last = read.origin->time;
    m_entries.splice(m_entries.end(), m_entries, known->second);
    entry.call.steps.push_back(
        {std::move(facts), *read.origin, m_count++, read.text, Verdict::sOf(read), read.packets, 0, 0, {}});
    return known->second;
}

void CallBook::add(const ReadMessage& read, bool isWanted) {
    put(read, isWanted);
}

std::vector<Call> CallBook::addLive(const ReadMessage& read, bool isWanted) {
    std::vector<Call> calls;
    takeOutSilent(read.origin->time, calls);
    if (m_past.contains(std::hash<std::string>()(read.text))) {
        ++m_count;
        return calls;
    }
    const Entries::iterator entry = put(read, isWanted);
    const bool hasEnded = !entry->call.id.empty() && entry->progress.hasEnded();
    const bool isFull = entry->call.steps.size() >= kMostMessages;
    if (isFull && !hasEnded) {
        entry->call.cut = "it has " + std::to_string(kMostMessages) + " messages";
    }
    if (hasEnded || isFull) {
        takeOut(entry, calls);
    }
    return calls;
}

void CallBook::takeOutSilent(std::chrono::microseconds now, std::vector<Call>& calls) {
    while (!m_entries.empty() && now - m_entries.front().last > kMostSilence) {
        m_entries.front().call.cut = "no message for " + std::to_string(kMostSilence.count()) + " hours";
        takeOut(m_entries.begin(), calls);
    }
}

void CallBook::takeOut(Entries::iterator entry, std::vector<Call>& calls) {
    for (const Step& step : entry->call.steps) {
        remember(step.text);
    }
    m_index.erase(entry->call.id);
    if (entry->isWanted) {
        order(entry->call);
        calls.push_back(std::move(entry->call));
    }
    m_entries.erase(entry);
}

void CallBook::remember(const std::string& text) {
    const std::size_t hash = std::hash<std::string>()(text);
    if (!m_past.insert(hash).second) {
        return;
    }
    m_pastOrder.push_back(hash);
    if (m_pastOrder.size() > kMostPast) {
        m_past.erase(m_pastOrder.front());
        m_pastOrder.pop_front();
    }
}

std::vector<Call> CallBook::finish() {
    std::map<std::pair<std::chrono::microseconds, std::size_t>, Call> byTime;
    for (Entry& entry : m_entries) {
        if (entry.isWanted) {
            order(entry.call);
            const std::pair begin(entry.call.begin(), entry.call.steps.front().index);
            byTime.emplace(begin, std::move(entry.call));
        }
    }
    std::vector<Call> calls;
    calls.reserve(byTime.size());
    for (auto& [begin, call] : byTime) {
        calls.push_back(std::move(call));
    }
    return calls;
}
