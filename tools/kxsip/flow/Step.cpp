#include "tools/kxsip/flow/Step.h"

#include "tools/kxsip/Printable.h"

std::string Step::remark() const {
    std::string result;
    const auto add = [&result](const std::string& more) { result += (result.empty() ? "" : ", ") + more; };
    if (facts.isResponse() && facts.method != "INVITE") {
        add("to " + printable(facts.method)); // several requests may be open at once
    }
    if (isFlawed()) {
        add(verdict.name());
    }
    if (facts.hasSdp) {
        add("SDP");
    }
    if (repeats) {
        add("repeats " + std::to_string(*repeats));
    }
    return result;
}
