#include "sipobject/headers/KxSipExpiresHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipNumberText.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

#include <algorithm>

namespace {

constexpr KxCharSet kNumberEnd(" \r\n");
constexpr KxCharSet kLineBreak("\r\n");
constexpr std::size_t kNumberLimit = 64;

} // namespace

constinit const KxConstString KxSipExpiresHeader::sToken{"Expires"};

static const KxSipExpiresHeader::Registration s_registration;

void KxSipExpiresHeader::readDate(std::string_view text) {
    m_date.constructKxDate(text);
    m_isDate = true;
    m_deltaSeconds = 0;
}

/** Reads a number followed only by blanks; otherwise leaves the stream unchanged. */
KxSipFault KxSipExpiresHeader::parseSeconds(KxSipLine& line, bool& taken) {
    const std::string_view text = line.window();
    const char* const end = text.data() + text.size();
    const char* const stop = kNumberEnd.find(text.data(), end);
    const std::string_view number(text.data(), static_cast<std::size_t>(stop - text.data()));
    if (stop == end || number.size() >= kNumberLimit) {
        return KxSipFault("un-expecting end of file when parsing KxSipExpiresHeader");
    }
    const char* const next = std::find_if_not(stop, end, [](char c) { return c == ' '; });
    taken = next != end && kLineBreak.contains(*next);
    if (taken) {
        m_isDate = false;
        m_deltaSeconds = static_cast<std::uint32_t>(KxAscii::toNumber(number));
        line.consume(static_cast<std::size_t>(next - text.data()));
    }
    return {};
}

KxSipFault KxSipExpiresHeader::parseValue(KxSipLine& line) {
    if (KxSipGrammar::sChecksNumbers()) {
        m_isDate = false;
        return KxSipNumberText::sRead(line, UINT32_MAX, m_deltaSeconds, "Invalid Expires header");
    }
    if (KxAscii::isDigit(static_cast<char>(KxStreamTokenizer::sDiscardWhite(line)))) {
        bool taken = false;
        const KxSipFault fault = parseSeconds(line, taken);
        if (taken || fault) {
            return fault;
        }
    }
    const std::string_view date = line.token(kLineBreak);
    if (date.empty()) {
        return KxSipFault("Invalid Expires header");
    }
    readDate(date);
    return {};
}

void KxSipExpiresHeader::serializeValue(KxOutputStream& out) const {
    if (m_isDate) {
        m_date.getKxDate(out);
    } else {
        out.writeAll(m_deltaSeconds);
    }
}
