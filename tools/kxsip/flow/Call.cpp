#include "tools/kxsip/flow/Call.h"

#include "tools/kxsip/Printable.h"

#include <array>
#include <cstdio>

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
