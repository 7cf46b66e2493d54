#include "tools/kxsip/flow/CallSummary.h"

#include <algorithm>
#include <functional>

namespace {

constexpr std::size_t kRemembered = 256;

/** Sets the time if it was not known, or is earlier. */
void note(std::optional<CallSummary::Time>& known, CallSummary::Time time) {
    known = known ? std::min(*known, time) : time;
}

std::uint64_t hashOf(const ReadMessage& read) {
    const auto hash = [](const auto& value) { return std::hash<std::decay_t<decltype(value)>>()(value); };
    const std::string ends = read.origin->source.text() + ' ' + read.origin->destination.text();
    return hash(read.text) * 31 + hash(ends);
}

} // namespace

void CallSummary::add(const ReadMessage& read, const MessageFacts& facts, std::size_t) {
    const Time time = read.origin->time;
    if (messages == 0 || time < begin) {
        id = facts.callId;
        from = facts.from;
        to = facts.to;
        method = facts.method;
        begin = time;
    }
    ++messages;
    countRepeat(read);
    if (!facts.isResponse() && facts.method == "BYE") {
        note(hungUp, time);
    }
    if (facts.isResponse() && facts.method == method) {
        if (facts.code / 10 == 18) {
            note(ringing, time);
        } else if (facts.code >= 200) {
            takeFinal(facts.code, time);
        }
    }
}

void CallSummary::takeFinal(int status, Time time) {
    const bool isSuccess = status < 300;
    if (isSuccess ? !answered || time < *answered : !answered) {
        code = status;
    }
    if (isSuccess) {
        note(answered, time);
    }
}

void CallSummary::countRepeat(const ReadMessage& read) {
    const std::uint64_t hash = hashOf(read);
    if (std::find(m_latest.begin(), m_latest.end(), hash) != m_latest.end()) {
        ++repeats;
    } else if (m_latest.size() < kRemembered) {
        m_latest.push_back(hash);
    } else {
        m_latest[(messages - repeats) % kRemembered] = hash;
    }
}

std::optional<CallSummary::Time> CallSummary::duration() const {
    if (method != "INVITE" || !answered || !hungUp || *hungUp < *answered) {
        return std::nullopt;
    }
    return *hungUp - *answered;
}

std::optional<CallSummary::Time> CallSummary::since(const std::optional<Time>& time) const {
    return time ? std::optional(*time - begin) : std::nullopt;
}
