#include "sipobject/address/KxSipURLParser.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipHost.h"
#include "sipobject/KxSipLineText.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxSipURLHeadersParser.h"
#include "util/KxBytes.h"

#include <algorithm>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipURL"};

constexpr KxCharSet kDelimiters(" \r\":@;,<&\n>?");
constexpr KxCharSet kStrictDelimiters = kDelimiters | KxCharSet("\t");
constexpr KxCharSet kBareUserEnd("@,;?\"<> \t\r\n");
constexpr char kEndOfInput = '\x04'; // like NUL, has no meaning as a delimiter before a token
constexpr char kInPassword = '\x05'; // a colon came after the user
constexpr const char* kWrongFormat = "Sip URL wrong format";

void debug(const char* what, const KxSharedParameters& list) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, std::string(what).append(list.getString().view()));
    }
}

} // namespace

template <bool kStrict>
inline const char* KxSipURLParser<kStrict>::findDelimiter(const char* from) const {
    return (kStrict ? kStrictDelimiters : kDelimiters).find(from, m_end, m_line.readableEnd());
}

template <bool kStrict>
inline bool KxSipURLParser<kStrict>::userIsOpen() const {
    return m_hasUserPart && (kStrict || m_url.m_user.empty());
}

/** Whether the URL is in a header, without brackets: "," and ";" then end it. [RFC 3261 20.10] */
template <bool kStrict>
inline bool KxSipURLParser<kStrict>::isBare() const {
    return !m_bracket && !m_url.m_standalone;
}

/** Whether an "@" follows that ends a user. */
template <bool kStrict>
inline bool KxSipURLParser<kStrict>::findUserPart() {
    if constexpr (kStrict) {
        if (isBare()) {
            const char* const stop = kBareUserEnd.find(m_at, m_end, m_line.readableEnd());
            return stop != m_end && *stop == '@';
        }
    }
    return m_line.hasUserPart(m_at);
}

/** Returns false if the token can't be what it must be. */
template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipURLParser<kStrict>::closeToken() {
    bool isRight = true;
    if (m_previous == ':' && m_hostSeen) {
        isRight = Parts::sSetPort(m_url, m_token.view());
    } else if (m_previous == ':' || m_previous == '@') {
        isRight = Parts::sSetHost(m_url, m_token.view());
    }
    m_token.clear();
    return !kStrict || isRight;
}

template <bool kStrict>
[[gnu::cold]] auto KxSipURLParser<kStrict>::refuse(const char* text) -> Next {
    m_fault = KxSipFault(text);
    return Next::Refused;
}

template <bool kStrict>
[[gnu::always_inline]] inline auto KxSipURLParser<kStrict>::doneWithHost() -> Next {
    return m_url.m_host.empty() ? refuse(kWrongFormat) : Next::Done;
}

template <bool kStrict>
[[gnu::cold, gnu::noinline]] void KxSipURLParser<kStrict>::parseWithoutReturns(std::string_view parameters) {
    m_url.m_parameters.write().parse(KxSipLineText::sWithoutReturns(parameters).view());
}

/** If kStrict, returns false for quotes, blanks and tabs. */
template <bool kStrict>
[[gnu::noinline]] bool KxSipURLParser<kStrict>::parameters() {
    const char* stop = kStrict
                           ? KxBytes::findAny<'\n', '>', '?', '\r', '"', ' ', '\t'>(m_at, m_end, m_line.readableEnd())
                           : KxBytes::findAny<'\n', '>', '?', '\r'>(m_at, m_end, m_line.readableEnd());
    if (stop != m_end && *stop == '\r') [[unlikely]] {
        stop = KxBytes::findAny<'\n', '>', '?'>(stop, m_end);
        if (kStrict && textTo(stop).find_first_of("\" \t") != std::string_view::npos) {
            return false;
        }
        parseWithoutReturns(textTo(stop));
    } else if (stop != m_at) {
        m_url.m_parameters.write().parse(textTo(stop), m_line.readableEnd());
    }
    debug("Parsed SipURL parameters (1): ", m_url.m_parameters);
    m_at = stop;
    m_previous = stop == m_end ? kEndOfInput : *stop;
    return !kStrict || (m_previous != '"' && m_previous != ' ' && m_previous != '\t');
}

template <bool kStrict>
inline auto KxSipURLParser<kStrict>::takeScheme(std::string_view token) -> Next {
    const KxString& sip = KxSipURL::sToken;
    if (token == sip.view()) {
        m_url.m_Scheme = sip;
    } else if (sip.equalsNoCase(token)) {
        m_url.m_Scheme = KxString(token);
    } else if (kStrict && KxSipURL::sSecureToken.equalsNoCase(token)) {
        m_url.m_Scheme = KxSipURL::sSecureToken;
        m_url.setForm(KxSipURL::kSecure, true);
    } else {
        return refuse("Scheme is not SIP");
    }
    if constexpr (kStrict) {
        m_hasUserPart = findUserPart(); // whether the URL is bare was not known before
    }
    return Next::More;
}

/** Whether the token is the beginning of an IPv6 reference, to which a colon after it belongs. */
template <bool kStrict>
inline bool KxSipURLParser<kStrict>::isInReference(std::string_view token) const {
    return kStrict && !m_hasUserPart && !m_hostSeen && m_previous != '\0' && !token.empty() && token.front() == '[' &&
           token.back() != ']';
}

template <bool kStrict>
[[gnu::noinline]] auto KxSipURLParser<kStrict>::colon() -> Next {
    const std::string_view token = m_token.view();
    Next next = Next::More;
    if (isInReference(token)) {
        m_token.add(m_at - 1, m_at);
        return next;
    }
    if (m_previous == '\0') {
        next = takeScheme(token);
    } else if (m_previous == ':' && m_hasUserPart) {
        if (kStrict && token.empty()) {
            return refuse(kWrongFormat);
        }
        m_url.m_user = KxString(token);
        if (kStrict) {
            m_previous = kInPassword;
            m_token.clear();
            return next;
        }
    } else if (kStrict && m_previous == kInPassword) {
        return refuse(kWrongFormat);
    } else if (m_previous == ':' || m_previous == '@') {
        if ((kStrict && (m_hostSeen || m_at == m_end || !KxAscii::isDigit(*m_at))) || !Parts::sSetHost(m_url, token)) {
            return refuse(kWrongFormat);
        }
        m_hostSeen = true;
    }
    m_previous = ':';
    m_token.clear();
    return next;
}

template <bool kStrict>
[[gnu::always_inline]] inline auto KxSipURLParser<kStrict>::semicolon() -> Next {
    const bool ownParameters = m_bracket || m_url.m_standalone;
    if (userIsOpen() || (ownParameters && m_previous != ':' && m_previous != '@')) {
        m_token.add(m_at - 1, m_at);
        return Next::More;
    }
    if (m_previous != ':' && m_previous != '@') {
        return refuse("Illegal URL construct");
    }
    if (!closeToken()) {
        return refuse(kWrongFormat);
    }
    const Next next = doneWithHost();
    if (next != Next::Done || !ownParameters) {
        return next;
    }
    return parameters() ? Next::More : refuse(kWrongFormat);
}

/** Handles the end of input, a line end, ">" or "?". */
template <bool kStrict>
[[gnu::always_inline]] inline auto KxSipURLParser<kStrict>::end(int c) -> Next {
    if (c == '?') {
        if (userIsOpen()) {
            m_token.add(m_at - 1, m_at);
            return Next::More;
        }
        if (!closeToken()) {
            return refuse(kWrongFormat);
        }
        m_fault = parseHeaders();
        if (m_fault) {
            return Next::Refused;
        }
        return kStrict && m_bracket && m_at[-1] != '>' ? refuse(kWrongFormat) : doneWithHost();
    }
    if (kStrict && m_bracket && c != '>') {
        return refuse(kWrongFormat);
    }
    if (!kStrict && c == '>') {
        m_at = std::find_if_not(m_at, m_end, [](char b) { return b == ' ' || b == '\t' || b == '\r' || b == '\n'; });
        m_at += m_at != m_end && *m_at == ';' ? 1 : 0;
    }
    if (!closeToken()) {
        return refuse(kWrongFormat);
    }
    return doneWithHost();
}

/** Handles "<" and "&". */
template <bool kStrict>
auto KxSipURLParser<kStrict>::bracket(char c) -> Next {
    if (kStrict && c == '&') {
        m_token.add(m_at - 1, m_at);
        return Next::More;
    }
    if (kStrict && (m_previous != '\0' || !m_token.view().empty())) {
        return refuse(kWrongFormat);
    }
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, "KxSipURL::parse(rInputStream) Found '<' setting Abracket to true");
    }
    m_bracket = true;
    return Next::More;
}

/** Reads the token that ends at `stop`, a delimiter or the end, and then the delimiter. */
template <bool kStrict>
[[gnu::noinline]] auto KxSipURLParser<kStrict>::take(const char* stop) -> Next {
    m_token.add(m_at, stop);
    m_at = stop;
    const int c = stop == m_end ? -1 : static_cast<unsigned char>(*m_at++);
    switch (c) {
    case ' ':
    case '\t':
        return kStrict && m_bracket ? refuse(kWrongFormat) : Next::More;
    case '\r':
        return Next::More;
    case '"':
        return addQuoted();
    case ':':
        return colon();
    case '@':
        return at();
    case ';':
        return semicolon();
    case ',':
        return comma();
    case '<':
    case '&':
        return bracket(*stop);
    default:
        return end(c);
    }
}

template <bool kStrict>
KxSipFault KxSipURLParser<kStrict>::parse() {
    if constexpr (kStrict) {
        m_url.m_form = 0;
    }
    m_url.m_Scheme = KxString();
    m_hasUserPart = m_line.hasUserPart(m_at);
    while (take(findDelimiter(m_at)) == Next::More) {
    }
    return m_fault;
}

template <bool kStrict>
auto KxSipURLParser<kStrict>::addQuoted() -> Next {
    if (kStrict) {
        return refuse(kWrongFormat);
    }
    const char* from = m_at - 1;
    if (userIsOpen()) {
        m_at = std::find(m_at, m_end, '"');
        if (m_at == m_end) {
            return refuse("Sip URL, Double quote mismatch");
        }
        ++m_at;
    }
    for (const char* stop = from; stop != m_at; from = stop + 1) {
        stop = std::find(from, m_at, '\r');
        m_token.add(from, stop);
    }
    return Next::More;
}

template <bool kStrict>
auto KxSipURLParser<kStrict>::at() -> Next {
    if (!kStrict && m_previous == '\0') {
        return Next::More;
    }
    if (m_previous == '@' || (kStrict && (m_previous == '\0' || !m_hasUserPart))) {
        return refuse(kWrongFormat);
    }
    const std::string_view token = m_token.view();
    if (kStrict ? m_previous == kInPassword : !m_url.m_user.empty()) {
        Parts::sSetPassword(m_url, token);
    } else if (token.empty()) {
        return refuse("Sip URL wrong format (\"@\" present without a user part)");
    } else {
        m_url.m_user = KxString(token);
    }
    m_hasUserPart = m_hasUserPart && !kStrict;
    m_previous = '@';
    m_token.clear();
    return Next::More;
}

template <bool kStrict>
auto KxSipURLParser<kStrict>::comma() -> Next {
    if (userIsOpen()) {
        m_token.add(m_at - 1, m_at);
        return Next::More;
    }
    if (kStrict && m_bracket) {
        return refuse(kWrongFormat);
    }
    --m_at; // the next value of the header begins there
    if (!closeToken()) {
        return refuse(kWrongFormat);
    }
    return doneWithHost();
}

template <bool kStrict>
KxSipFault KxSipURLParser<kStrict>::parseHeaders() {
    KxSipURLHeadersParser<kStrict> parser(m_url, textTo(m_end), m_line.readableEnd(), kStrict && isBare());
    const KxSipFault fault = parser.parse();
    m_at = parser.end();
    return fault;
}

template KxSipFault KxSipURLParser<false>::parse();
template KxSipFault KxSipURLParser<true>::parse();
template KxSipFault KxSipURLParser<false>::parseHeaders();
template KxSipFault KxSipURLParser<true>::parseHeaders();
