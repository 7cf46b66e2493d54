#include "tools/kxsip/flow/Call.h"

#include "tools/kxsip/Printable.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>
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

} // namespace

void Call::add(const ReadMessage& read, const MessageFacts& facts, std::size_t index) {
    id = facts.callId;
    steps.push_back({facts, *read.origin, index, read.text, Verdict::sOf(read), read.packets, 0, 0, {}});
}

void Call::finish() {
    std::sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) {
        return std::tie(a.origin.time, a.index) < std::tie(b.origin.time, b.index);
    });
    findColumns(*this);
    findRepeats(*this);
}

std::string Call::title(std::string_view between) const {
    const MessageFacts& facts = steps.front().facts;
    if (facts.from.empty() && facts.to.empty()) {
        return printable(facts.method);
    }
    return printable(facts.method + " " + facts.from) + std::string(between) + printable(facts.to);
}

/** Returns the first success, else the last failure. There may be several final responses: requests are repeated with
    credentials, and re-INVITEs change the call later. */
const Step* Call::finalResponse() const {
    const Step* failure = nullptr;
    for (const Step& step : steps) {
        if (step.facts.code < 200 || step.facts.method != steps.front().facts.method) {
            continue;
        }
        if (step.facts.code < 300) {
            return &step;
        }
        failure = &step;
    }
    return failure;
}

std::string Call::result() const {
    const Step* const step = finalResponse();
    return step == nullptr ? "no final response" : step->facts.label();
}

int Call::resultCode() const {
    const Step* const step = finalResponse();
    return step == nullptr ? 0 : step->facts.code;
}

std::string Call::extent() const {
    return std::to_string(steps.size()) + (steps.size() == 1 ? " message in " : " messages in ") +
           secondsText(duration()) + " s" + (cut.empty() ? "" : " (did not end: " + cut + ")");
}

std::string secondsText(std::chrono::microseconds time) {
    std::array<char, 40> text{};
    const std::chrono::milliseconds rounded = std::chrono::round<std::chrono::milliseconds>(time);
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(rounded.count()) / 1000);
    return text.data();
}
