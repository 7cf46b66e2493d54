#include "sipobject/headers/KxSipTimestampHeader.h"

#include "util/KxOutputStream.h"

#include <algorithm>

constinit const KxConstString KxSipTimestampHeader::sToken{"Timestamp"};

static const KxSipTimestampHeader::Registration s_registration;

namespace {

/** Reads digits, a point and digits; each of the three may be missing. */
std::string_view takeDecimal(KxSipLine& line) {
    const std::string_view text = line.window();
    const auto point = std::find_if_not(text.begin(), text.end(), KxAscii::isDigit);
    const auto end =
        point != text.end() && *point == '.' ? std::find_if_not(point + 1, text.end(), KxAscii::isDigit) : point;
    line.consume(static_cast<std::size_t>(end - text.begin()));
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

} // namespace

KxSipFault KxSipTimestampHeader::parseValue(KxSipLine& line) {
    if (const KxSipFault fault = expectDigit(line, "Invalid Timestamp header")) {
        return fault;
    }
    m_timestamp = KxString(takeDecimal(line));
    KxStreamTokenizer::sDiscardWhite(line);
    m_delay = KxString(takeDecimal(line));
    return {};
}

void KxSipTimestampHeader::serializeValue(KxOutputStream& out) const {
    out << m_timestamp;
    if (!m_delay.empty()) {
        out << ' ' << m_delay;
    }
}
