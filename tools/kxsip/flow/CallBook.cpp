#include "tools/kxsip/flow/CallBook.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <tuple>

namespace {

constexpr std::size_t kMostPast = 65536;

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
        known->second = m_entries.insert(m_entries.end(), Entry{{facts.callId, {}, {}}, false, {}});
    }
    Entry& entry = *known->second;
    entry.isWanted = entry.isWanted || isWanted;
    entry.progress.take(read, facts);
    const std::string error = read.isRefused() ? std::string(read.error->getExceptionMessage().view()) : "";
    entry.call.steps.push_back({std::move(facts), *read.origin, m_count++, read.text, error, 0, 0, {}});
    return known->second;
}

void CallBook::add(const ReadMessage& read, bool isWanted) {
    put(read, isWanted);
}

std::optional<Call> CallBook::addLive(const ReadMessage& read, bool isWanted) {
    if (m_past.contains(std::hash<std::string>()(read.text))) {
        ++m_count;
        return std::nullopt;
    }
    const Entries::iterator entry = put(read, isWanted);
    const bool hasEnded = !entry->call.id.empty() && entry->progress.hasEnded();
    return hasEnded ? takeOut(entry) : std::nullopt;
}

std::optional<Call> CallBook::takeOut(Entries::iterator entry) {
    for (const Step& step : entry->call.steps) {
        remember(step.text);
    }
    m_index.erase(entry->call.id);
    std::optional<Call> call;
    if (entry->isWanted) {
        order(entry->call);
        call = std::move(entry->call);
    }
    m_entries.erase(entry);
    return call;
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
    std::multimap<std::chrono::microseconds, Call> byTime;
    for (Entry& entry : m_entries) {
        if (entry.isWanted) {
            order(entry.call);
            byTime.emplace(entry.call.begin(), std::move(entry.call));
        }
    }
    std::vector<Call> calls;
    calls.reserve(byTime.size());
    for (auto& [begin, call] : byTime) {
        calls.push_back(std::move(call));
    }
    return calls;
}
