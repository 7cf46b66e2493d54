#include "sipobject/headers/KxSipRetryAfterHeader.h"

#include "sipobject/KxSipGrammar.h"

constinit const KxConstString KxSipRetryAfterHeader::sToken{"Retry-After"};

static const KxSipRetryAfterHeader::Registration s_registration;

namespace {

/** The parenthesis that closes the one before `at`, or `end`. A backslash escapes the next character. */
const char* closingParenthesis(const char* at, const char* end) {
    for (std::size_t open = 1; at != end; ++at) {
        if (*at == '\\' && end - at > 1) {
            ++at;
        } else if (*at == '(') {
            ++open;
        } else if (*at == ')' && --open == 0) {
            break;
        }
    }
    return at;
}

} // namespace

void KxSipRetryAfterHeader::forgetValue() {
    m_number = 0;
    m_comment = KxString();
    m_parameters.clear();
}

KxSipFault KxSipRetryAfterHeader::parseValue(KxSipLine& line) {
    if (const KxSipFault fault = parseNumber(line)) {
        return fault;
    }
    if (KxStreamTokenizer::sDiscardWhite(line) == '(') {
        line.read();
        if (!parseComment(line) && KxSipGrammar::sReadsLinesByValue()) {
            return KxSipFault(kNoDigitError);
        }
    }
    return parseParameters(line);
}

/** Returns false for a comment that is not closed. */
bool KxSipRetryAfterHeader::parseComment(KxSipLine& line) {
    const std::string_view text = line.window();
    const std::size_t length =
        static_cast<std::size_t>(closingParenthesis(text.data(), text.data() + text.size()) - text.data());
    if (length != text.size()) {
        m_comment = KxString(text.substr(0, length));
    }
    line.consume(length);
    return line.read() == ')';
}

void KxSipRetryAfterHeader::serializeValue(KxOutputStream& out) const {
    out << m_number;
    if (!m_comment.empty()) {
        out << " (" << m_comment << ')';
    }
    serializeParameters(out);
}
