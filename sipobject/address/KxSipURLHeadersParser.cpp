#include "sipobject/address/KxSipURLHeadersParser.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxSipURLToken.h"
#include "util/KxCharSet.h"
#include "util/KxHexEncoding.h"

#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipURL"};

constexpr KxCharSet kClassicSpecials(" \r\n\"%;=>");    // in "?name=value;name=value"
constexpr KxCharSet kStrictSpecials(" \t\r\n\"&,;=>@"); // in "?name=value&name=value"

constexpr std::string_view textOf(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

} // namespace

/** Reads the next character, decoded if escaped; returns -1 at the end. An incomplete escape is not decoded. */
template <bool kStrict>
inline int KxSipURLHeadersParser<kStrict>::nextCharacter() {
    if (m_at == m_end) {
        return -1;
    }
    const char c = *m_at++;
    if (kStrict || c != '%' || m_end - m_at < 2) {
        return static_cast<unsigned char>(c);
    }
    m_at += 2;
    return static_cast<unsigned char>(KxHexEncoding::fromHex(m_at[-2], m_at[-1]));
}

template <bool kStrict>
KxSipFault KxSipURLHeadersParser<kStrict>::parse() {
    const Oskan::TraceScope trace(s_logger, "KxSipURL::parseHeader");
    const auto findSpecial = [this](const char* from) {
        return (kStrict ? kStrictSpecials : kClassicSpecials).find(from, m_end, m_readable);
    };
    const char* const equals = findSpecial(m_at);
    if (equals != m_end && *equals == '=') { // usually this is the only header
        const char* const stop = findSpecial(equals + 1);
        if (stop == m_end || *stop == '>') {
            const char* const begin = m_at;
            m_at = stop + (stop == m_end ? 0 : 1);
            return store(textOf(begin, equals), textOf(equals + 1, stop), true);
        }
    }
    return parseSeveral();
}

template <bool kStrict>
[[gnu::noinline]] KxSipFault KxSipURLHeadersParser<kStrict>::parseSeveral() {
    constexpr char kSeparator = kStrict ? '&' : ';';
    KxSipURLToken name;
    KxSipURLToken value;
    bool inValue = false;
    bool quoted = false;
    while (true) {
        const char* const stop = (kStrict ? kStrictSpecials : kClassicSpecials).find(m_at, m_end, m_readable);
        KxSipURLToken& part = inValue ? value : name;
        part.add(m_at, stop);
        m_at = stop;
        const int c = nextCharacter();
        if (c < 0 || c == '>') {
            break;
        }
        if (c == '\n') {
            if (m_at == m_end || (*m_at != ' ' && *m_at != '\t')) {
                break;
            }
            ++m_at; // a folded line continues
        } else if (c == kSeparator) {
            if (const KxSipFault fault = store(inValue ? name.view() : std::string_view(), value.view(), false)) {
                return fault;
            }
            name.clear();
            value.clear();
            inValue = false;
        } else if (c == '=' && !inValue) {
            inValue = true;
        } else if (kStrict && m_isBare && (c == ',' || c == ';')) {
            m_at -= c == ',' ? 1 : 0; // the next value of the header begins there
            break;
        } else if (kStrict && (c == '"' || c == '@' || c == ' ' || c == '\t')) {
            return KxSipFault("Sip URL wrong format");
        } else if (c != '\r' && (c != ' ' || quoted)) {
            quoted ^= c == '"';
            if (m_at - stop == 1) {
                part.add(stop, m_at);
            } else {
                part.addCopy(static_cast<char>(c)); // it was escaped
            }
        }
    }
    return store(inValue ? name.view() : std::string_view(), value.view(), true);
}

template <bool kStrict>
KxSipFault KxSipURLHeadersParser<kStrict>::store(std::string_view name, std::string_view value, bool last) {
    if (name.empty()) {
        return KxSipFault(last ? "SIP URL Header doesn't have Key/Value pair (1)\n"
                               : "SIP URL Header doesn't have Key/Value pair (2)\n");
    }
    if (!kStrict && value.empty()) {
        return KxSipFault(last ? "SIP URL Header key doesn't have a value (1)\n"
                               : "SIP URL Header key doesn't have a value (2)\n");
    }
    add(name, value);
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, std::string(last ? "SipURL headers now (3): " : "SipURL headers now (2): ")
                                                 .append(m_url.m_headers.getString().view()));
    }
    return {};
}

/** In the RFC grammar, a repeated header is a further value of the first one. [RFC 3261 7.3.1] */
template <bool kStrict>
void KxSipURLHeadersParser<kStrict>::add(std::string_view name, std::string_view value) {
    KxParameters& headers = m_url.m_headers.write();
    if (!kStrict) {
        headers.setValue(name, KxString(value));
    } else if (headers.appendToValue(name, "%2C")) {
        headers.appendToValue(name, value);
    } else {
        headers.setValue(name, value.empty() ? KxString("") : KxString(value));
    }
}

template KxSipFault KxSipURLHeadersParser<false>::parse();
template KxSipFault KxSipURLHeadersParser<true>::parse();
