#include "tools/kxsip/flow/CallBook.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace {

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

void CallBook::add(const ReadMessage& read, bool isWanted) {
    MessageFacts facts(read);
    const auto [known, isNew] = m_index.emplace(facts.callId, m_entries.size());
    if (isNew) {
        m_entries.push_back({{facts.callId, {}, {}}, false});
    }
    Entry& entry = m_entries[known->second];
    entry.isWanted = entry.isWanted || isWanted;
    const std::string error = read.isRefused() ? std::string(read.error->getExceptionMessage().view()) : "";
    entry.call.steps.push_back({std::move(facts), *read.origin, m_count++, read.text, error, 0, 0, {}});
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
