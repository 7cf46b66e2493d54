#include "sipobject/headers/KxSipTimestampHeader.h"

#include "util/KxOutputStream.h"

#include <algorithm>

constinit const KxConstString KxSipTimestampHeader::sToken{"Timestamp"};

static const KxSipTimestampHeader::Registration s_registration;

namespace {

/** Reads digits, a point and digits; each of the three may be missing. */
std::string_view takeDecimal(KxInputStream& in) {
    const std::string_view text = in.window();
    const auto point = std::find_if_not(text.begin(), text.end(), KxAscii::isDigit);
    const auto end =
        point != text.end() && *point == '.' ? std::find_if_not(point + 1, text.end(), KxAscii::isDigit) : point;
    in.consume(static_cast<std::size_t>(end - text.begin()));
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

} // namespace

KxSipFault KxSipTimestampHeader::parseValue(KxInputStream& in) {
    if (const KxSipFault fault = expectDigit(in, "Invalid Timestamp header")) {
        return fault;
    }
    m_timestamp = KxString(takeDecimal(in));
    KxStreamTokenizer::sDiscardWhite(in);
    m_delay = KxString(takeDecimal(in));
    return {};
}

void KxSipTimestampHeader::serializeValue(KxOutputStream& out) const {
    out << m_timestamp;
    if (!m_delay.empty()) {
        out << ' ' << m_delay;
    }
}
