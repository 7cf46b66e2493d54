#include "tools/kxsip/flow/Call.h"

#include "tools/kxsip/HeaderScan.h"
#include "tools/kxsip/Printable.h"
#include "util/KxAscii.h"

#include <algorithm>
#include <array>
#include <cstdio>
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
    std::stable_sort(call.steps.begin(), call.steps.end(),
                     [](const Step& a, const Step& b) { return a.origin.time < b.origin.time; });
    findColumns(call);
    findRepeats(call);
}

bool carriesSdp(std::string_view text) {
    const std::string_view type = HeaderScan::valueOf(text, "Content-Type", 'c').value_or("");
    return KxAscii::equalsNoCase(type.substr(0, 15), "application/sdp");
}

} // namespace

std::string Step::remark() const {
    std::string result;
    const auto add = [&result](const std::string& more) { result += (result.empty() ? "" : ", ") + more; };
    if (facts.isResponse() && facts.method != "INVITE") {
        add("to " + facts.method); // several requests may be open at once
    }
    if (carriesSdp(text)) {
        add("SDP");
    }
    if (repeats) {
        add("repeats " + std::to_string(*repeats));
    }
    if (!error.empty()) {
        add("refused");
    }
    return result;
}

std::string Column::portText() const {
    if (ports.empty()) {
        return "";
    }
    return ports.size() == 1 ? "port " + std::to_string(*ports.begin()) : std::to_string(ports.size()) + " ports";
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
    std::vector<Call> calls;
    for (Entry& entry : m_entries) {
        if (entry.isWanted) {
            order(entry.call);
            calls.push_back(std::move(entry.call));
        }
    }
    std::stable_sort(calls.begin(), calls.end(), [](const Call& a, const Call& b) { return a.begin() < b.begin(); });
    return calls;
}

std::string dateText(std::chrono::microseconds time) {
    std::string text = utcText(time);
    text.replace(text.find('T'), 1, " ");
    return text.erase(text.size() - 4) + " UTC";
}

std::string secondsText(std::chrono::microseconds time) {
    std::array<char, 40> text{};
    const std::chrono::milliseconds rounded = std::chrono::round<std::chrono::milliseconds>(time);
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(rounded.count()) / 1000);
    return text.data();
}
