#include "sipobject/address/KxSipURLParser.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipLineText.h"
#include "sipobject/address/KxSipURL.h"
#include "util/KxBytes.h"
#include "util/KxHexEncoding.h"

#include <algorithm>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipURL"};

constexpr KxCharSet kDelimiters(" \r\":@;,<&\n>?");
constexpr KxCharSet kHeaderSpecials(" \r\n\"%;=>"); // in "?name=value;name=value"
constexpr char kEndOfInput = '\x04';                // like NUL, has no meaning as a delimiter before a token

void debug(const char* what, const KxSharedParameters& list) {
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, std::string(what).append(list.getString().view()));
    }
}

} // namespace

void KxSipURLParser::Token::addMore(const char* begin, const char* end) {
    const std::string_view more(begin, static_cast<std::size_t>(end - begin));
    if (m_view.data() + m_view.size() == begin) {
        m_view = std::string_view(m_view.data(), m_view.size() + more.size());
    } else if (!more.empty()) {
        if (m_view.data() != m_copy.data()) {
            m_copy.clear();
            m_copy.append(m_view);
        }
        m_copy.append(more);
        m_view = m_copy.view();
    }
}

inline const char* KxSipURLParser::findDelimiter(const char* from) const {
    return kDelimiters.find(from, m_end, m_line.readableEnd());
}

bool KxSipURLParser::userIsOpen() const {
    return m_hasUserPart && m_url.m_user.empty();
}

/** Reads the usual start of a URL, as far as it is present: "<", "sip:", "user@" or "user:password@", and "host:port".
    Returns the first delimiter after the part that was read, or nullptr, without reading anything, if not even the
    scheme is as usual. */
inline const char* KxSipURLParser::takeUsualStart() {
    const bool bracket = m_at != m_end && *m_at == '<';
    const bool blank = m_at != m_end && *m_at == ' '; // as before a Request-URI
    const char* const scheme = m_at + (bracket || blank ? 1 : 0);
    if (m_end - scheme < 5 || KxBytes::load<std::uint32_t>(scheme) != KxBytes::load<std::uint32_t>("sip:") ||
        !m_url.m_user.empty() || s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        return nullptr;
    }
    m_bracket = bracket;
    m_at = scheme + 4;
    if (!m_url.m_Scheme.sharesWith(KxSipURL::sToken)) {
        m_url.m_Scheme = KxSipURL::sToken;
    }
    m_previous = ':';
    const char* const stop = findDelimiter(m_at);
    if (stop == m_end || *stop == '>' || *stop == '\n') {
        return takeUsualHost(stop);
    }
    if ((*stop == '@' || *stop == ':') && stop != m_at && takeUsualUser(stop)) {
        return takeUsualHost(findDelimiter(m_at));
    }
    m_hasUserPart = m_line.hasUserPart(m_at);
    return m_hasUserPart ? stop : takeUsualHost(stop);
}

/** Reads a user that ends at `stop`, and a password after it, if an "@" ends the two. */
inline bool KxSipURLParser::takeUsualUser(const char* stop) {
    const char* const end = *stop == '@' ? stop : findDelimiter(stop + 1);
    if (end == m_end || *end != '@') {
        return false;
    }
    m_hasUserPart = true;
    m_url.m_user = KxString(textTo(stop));
    if (end != stop) {
        m_at = stop + 1;
        m_url.m_password = KxString(textTo(end));
    }
    m_previous = '@';
    m_at = end + 1;
    return true;
}

/** Reads a host that ends at `stop`, and the digits of a port after it, if they end as usual; the state is then as
    after a colon without a port. Otherwise reads nothing. Returns the first delimiter after the part that was read. */
inline const char* KxSipURLParser::takeUsualHost(const char* stop) {
    const bool hasPort = stop != m_end && *stop == ':';
    const char* const end = hasPort ? std::find_if_not(stop + 1, m_end, KxAscii::isDigit) : stop;
    if (stop == m_at || (end != m_end && *end != ';' && *end != '>' && *end != '?')) {
        return stop;
    }
    m_url.m_host = KxString(textTo(stop));
    if (hasPort) {
        setPort(std::string_view(stop + 1, static_cast<std::size_t>(end - stop - 1)));
    }
    m_hostSeen = true;
    m_previous = ':';
    m_at = end;
    return end;
}

inline void KxSipURLParser::setPort(std::string_view digits) {
    if (!digits.empty()) {
        m_url.m_port = static_cast<std::uint32_t>(KxAscii::toNumber(digits));
        m_url.m_hasPort = true;
    }
}

inline void KxSipURLParser::closeToken() {
    if (m_previous == ':' && m_hostSeen) {
        setPort(m_token.view());
    } else if (m_previous == ':' || m_previous == '@') {
        m_url.m_host = KxString(m_token.view());
    }
    m_token.clear();
}

[[gnu::cold]] KxSipURLParser::Next KxSipURLParser::refuse(const char* text) {
    m_fault = KxSipFault(text);
    return Next::Refused;
}

inline KxSipURLParser::Next KxSipURLParser::doneWithHost() {
    return m_url.m_host.empty() ? refuse("Sip URL wrong format") : Next::Done;
}

[[gnu::cold, gnu::noinline]] void KxSipURLParser::parseWithoutReturns(std::string_view parameters) {
    m_url.m_parameters.write().parse(KxSipLineText::sWithoutReturns(parameters).view());
}

inline void KxSipURLParser::parameters() {
    const char* stop = KxBytes::findAny<'\n', '>', '?', '\r'>(m_at, m_end, m_line.readableEnd());
    if (stop != m_end && *stop == '\r') [[unlikely]] {
        stop = KxBytes::findAny<'\n', '>', '?'>(stop, m_end);
        parseWithoutReturns(textTo(stop));
    } else if (stop != m_at) {
        m_url.m_parameters.write().parse(textTo(stop), m_line.readableEnd());
    }
    debug("Parsed SipURL parameters (1): ", m_url.m_parameters);
    m_at = stop;
    m_previous = stop == m_end ? kEndOfInput : *stop;
}

inline KxSipURLParser::Next KxSipURLParser::colon() {
    const std::string_view token = m_token.view();
    if (m_previous == '\0') {
        const KxString& sip = KxSipURL::sToken;
        if (token == sip.view()) {
            m_url.m_Scheme = sip;
        } else if (sip.equalsNoCase(token)) {
            m_url.m_Scheme = KxString(token);
        } else {
            return refuse("Scheme is not SIP");
        }
    } else if (m_previous == ':' && m_hasUserPart) {
        m_url.m_user = KxString(token);
    } else if (m_previous == ':' || m_previous == '@') {
        m_url.m_host = KxString(token);
        m_hostSeen = true;
    }
    m_previous = ':';
    m_token.clear();
    return Next::More;
}

inline KxSipURLParser::Next KxSipURLParser::semicolon() {
    const bool ownParameters = m_bracket || m_url.m_standalone;
    if (userIsOpen() || (ownParameters && m_previous != ':' && m_previous != '@')) {
        m_token.add(m_at - 1, m_at);
        return Next::More;
    }
    if (m_previous != ':' && m_previous != '@') {
        return refuse("Illegal URL construct");
    }
    closeToken();
    const Next next = doneWithHost();
    if (next != Next::Done || !ownParameters) {
        return next;
    }
    parameters();
    return Next::More;
}

/** Handles the end of input, a line end, ">" or "?". */
inline KxSipURLParser::Next KxSipURLParser::end(int c) {
    if (c == '?') {
        if (userIsOpen()) {
            m_token.add(m_at - 1, m_at);
            return Next::More;
        }
        closeToken();
        m_fault = parseHeaders();
        return m_fault ? Next::Refused : doneWithHost();
    }
    if (c == '>') {
        m_at = std::find_if_not(m_at, m_end, [](char b) { return b == ' ' || b == '\t' || b == '\r' || b == '\n'; });
        m_at += m_at != m_end && *m_at == ';' ? 1 : 0;
    }
    closeToken();
    return doneWithHost();
}

/** Reads the token that ends at `stop`, a delimiter or the end, and then the delimiter. */
inline KxSipURLParser::Next KxSipURLParser::take(const char* stop) {
    m_token.add(m_at, stop);
    m_at = stop;
    const int c = stop == m_end ? -1 : static_cast<unsigned char>(*m_at++);
    switch (c) {
    case ' ':
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
        if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
            s_logger.log(Oskan::LogLevel::Debug, "KxSipURL::parse(rInputStream) Found '<' setting Abracket to true");
        }
        m_bracket = true;
        return Next::More;
    default:
        return end(c);
    }
}

KxSipFault KxSipURLParser::parse() {
    const char* stop = takeUsualStart();
    if (stop == nullptr) {
        m_url.m_Scheme = KxString();
        m_hasUserPart = m_line.hasUserPart(m_at);
        stop = findDelimiter(m_at);
    }
    while (take(stop) == Next::More) {
        stop = findDelimiter(m_at);
    }
    return m_fault;
}

KxSipURLParser::Next KxSipURLParser::addQuoted() {
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

KxSipURLParser::Next KxSipURLParser::at() {
    if (m_previous == '\0') {
        return Next::More;
    }
    if (m_previous == '@') {
        return refuse("Sip URL wrong format");
    }
    const std::string_view token = m_token.view();
    if (!m_url.m_user.empty()) {
        m_url.m_password = KxString(token);
    } else if (token.empty()) {
        return refuse("Sip URL wrong format (\"@\" present without a user part)");
    } else {
        m_url.m_user = KxString(token);
    }
    m_previous = '@';
    m_token.clear();
    return Next::More;
}

KxSipURLParser::Next KxSipURLParser::comma() {
    if (userIsOpen()) {
        m_token.add(m_at - 1, m_at);
        return Next::More;
    }
    --m_at; // the next value of the header begins there
    closeToken();
    return doneWithHost();
}

/** Reads the next character, decoded if escaped; returns -1 at the end. An incomplete escape is not decoded. */
int KxSipURLParser::nextHeaderCharacter() {
    if (m_at == m_end) {
        return -1;
    }
    const char c = *m_at++;
    if (c != '%' || m_end - m_at < 2) {
        return static_cast<unsigned char>(c);
    }
    m_at += 2;
    return static_cast<unsigned char>(KxHexEncoding::fromHex(m_at[-2], m_at[-1]));
}

KxSipFault KxSipURLParser::parseHeaders() {
    const Oskan::TraceScope trace(s_logger, "KxSipURL::parseHeader");
    Oskan::FastString<256> name;
    Oskan::FastString<256> value;
    bool inValue = false;
    bool quoted = false;
    while (true) {
        const char* const stop = kHeaderSpecials.find(m_at, m_end, m_line.readableEnd());
        (inValue ? value : name).append(m_at, static_cast<std::size_t>(stop - m_at));
        m_at = stop;
        const int c = nextHeaderCharacter();
        if (c < 0 || c == '>') {
            break;
        }
        if (c == '\n') {
            if (m_at == m_end || (*m_at != ' ' && *m_at != '\t')) {
                break;
            }
            ++m_at; // a folded line continues
        } else if (c == ';') {
            if (const KxSipFault fault = storeHeader(inValue ? name.view() : std::string_view(), value.view(), false)) {
                return fault;
            }
            name.clear();
            value.clear();
            inValue = false;
        } else if (c == '=' && !inValue) {
            inValue = true;
        } else if (c != '\r' && (c != ' ' || quoted)) {
            quoted ^= c == '"';
            (inValue ? value : name).append(static_cast<char>(c));
        }
    }
    return storeHeader(inValue ? name.view() : std::string_view(), value.view(), true);
}

KxSipFault KxSipURLParser::storeHeader(std::string_view name, std::string_view value, bool last) {
    if (name.empty()) {
        return KxSipFault(last ? "SIP URL Header doesn't have Key/Value pair (1)\n"
                               : "SIP URL Header doesn't have Key/Value pair (2)\n");
    }
    if (value.empty()) {
        return KxSipFault(last ? "SIP URL Header key doesn't have a value (1)\n"
                               : "SIP URL Header key doesn't have a value (2)\n");
    }
    m_url.m_headers.write().setValue(name, KxString(value));
    debug(last ? "SipURL headers now (3): " : "SipURL headers now (2): ", m_url.m_headers);
    return {};
}
