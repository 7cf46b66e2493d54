#include "tools/kxsip/flow/Step.h"

#include "tools/kxsip/HeaderScan.h"
#include "util/KxAscii.h"

namespace {

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
