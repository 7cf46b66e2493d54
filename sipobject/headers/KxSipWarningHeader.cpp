#include "sipobject/headers/KxSipWarningHeader.h"

#include "core/FastString.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

constinit const KxConstString KxSipWarningHeader::sToken{"Warning"};

static const KxSipWarningHeader::Registration s_registration;

namespace {

constexpr KxCharSet kAgentEnd(" \t\r\n,\"");
constexpr KxCharSet kQuoteEnd("\"\r\n");

/** The rest of a quoted string with its escapes removed; an unclosed string ends with the line. */
KxString takeQuoted(KxInputStream& in) {
    Oskan::FastString<256> text;
    for (int c = in.read(); c >= 0 && !kQuoteEnd.contains(static_cast<char>(c)); c = in.read()) {
        const int next = c == '\\' ? in.peek() : -1;
        const bool isEscape = next >= 0 && next != '\r' && next != '\n';
        text.append(static_cast<char>(isEscape ? in.read() : c));
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

KxSipFault KxSipWarningHeader::parseValue(KxInputStream& in) {
    if (const KxSipFault fault = expectDigit(in, "Invalid Warning header")) {
        return fault;
    }
    m_code = KxStreamTokenizer::sGetUnsigned(in);
    KxScannedText scanned;
    m_agent = KxString(scanned.token(in, kAgentEnd));
    KxScannedText::skipSpace(in);
    if (in.peek() == '"') {
        in.read();
        m_text = takeQuoted(in);
    } else {
        m_text = KxString(KxAscii::trim(scanned.until<','>(in)));
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
