#include "sipobject/headers/KxSipWarningHeader.h"

#include "core/FastString.h"
#include "util/KxOutputStream.h"

constinit const KxConstString KxSipWarningHeader::sToken{"Warning"};

static const KxSipWarningHeader::Registration s_registration;

namespace {

constexpr KxCharSet kAgentEnd(" \t\r\n,\"");
constexpr KxCharSet kQuoteEnd("\"\r\n");

/** The rest of a quoted string with its escapes removed; an unclosed string ends with the line. */
KxString takeQuoted(KxSipLine& line) {
    Oskan::FastString<256> text;
    for (int c = line.read(); c >= 0 && !kQuoteEnd.contains(static_cast<char>(c)); c = line.read()) {
        const int next = c == '\\' ? line.peek() : -1;
        const bool isEscape = next >= 0 && next != '\r' && next != '\n';
        text.append(static_cast<char>(isEscape ? line.read() : c));
    }
    return KxString(text.view());
}

void writeQuoted(KxOutputStream& out, std::string_view text) {
    out.write('"');
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out.write('\\');
        }
        out.write(c);
    }
    out.write('"');
}

} // namespace

KxSipFault KxSipWarningHeader::parseValue(KxSipLine& line) {
    if (const KxSipFault fault = expectDigit(line, "Invalid Warning header")) {
        return fault;
    }
    m_code = KxStreamTokenizer::sGetUnsigned(line);
    m_agent = KxString(line.token(kAgentEnd));
    line.skipSpace();
    if (line.peek() == '"') {
        line.read();
        m_text = takeQuoted(line);
    } else {
        m_text = KxString(KxAscii::trim(line.until<','>()));
    }
    return {};
}

void KxSipWarningHeader::serializeValue(KxOutputStream& out) const {
    out << m_code << ' ';
    if (!m_agent.empty()) {
        out << m_agent << ' ';
    }
    writeQuoted(out, m_text);
}
