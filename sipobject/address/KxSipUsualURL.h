#pragma once

#include "sipobject/KxSipFault.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxSipURLHeadersParser.h"
#include "sipobject/address/KxSipURLParts.h"
#include "util/KxBytes.h"
#include "util/KxCharSet.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

/** Reads a SIP URL of the usual form in one pass:

        [ "<" / " " ] "sip:" [ user [ ":" password ] "@" ] host [ ":" port ] [ ";" parameters ] [ "?" headers ] [ ">" ]

    No part is empty, quoted or folded, or has characters that are dropped, and no "@" comes later. KxSipURLParser reads
    every other text, and reads these texts in the same way. */
template <bool kStrict>
class KxSipUsualURL {
public:
    /** The URL at the begin of the text. The bytes up to `readable` may be loaded, too. Whether it is standalone
        matters only without brackets: in a header, ";" then ends it. [RFC 3261 20.10] */
    KxSipUsualURL(std::string_view text, const char* readable, bool standalone)
        : m_at(text.data()), m_end(m_at + text.size()), m_readable(readable), m_isBare(!standalone) {}

    /** Finds the parts. Returns false for text of another form. */
    bool find();
    /** Stores the parts that were found, into a URL without a user. Returns the fault of the headers. */
    KxSipFault store(KxSipURL& url);
    /** The end of what was read. */
    const char* end() const { return m_at; }

    /** Reads a URL; returns false, without a change, for text of another form. */
    static bool sTake(KxSipURL& url, KxSipLine& line, KxSipFault& fault);

private:
    using Parts = KxSipURLParts<kStrict>;
    static constexpr KxCharSet kDelimiters{" \t\r\n\":@;,<&>?"};
    static constexpr std::ptrdiff_t kMostDigits = 5; // of a port

    bool findStart();
    bool findUserAndHost();
    bool findRest();

    const char* findDelimiter(const char* from) const;
    const char* findPortEnd(const char* colon);
    bool endsHost(const char* at) const;
    std::string_view textTo(const char* end) const { return {m_at, static_cast<std::size_t>(end - m_at)}; }

    const char* m_at;
    const char* const m_end;
    const char* const m_readable;
    bool m_bracket = false;
    bool m_isBare; ///< Neither standalone nor in brackets.
    bool m_hasPort = false;
    bool m_hasHeaders = false;
    std::uint32_t m_port = 0;
    std::string_view m_user;     ///< Empty if there is none.
    std::string_view m_password; ///< Null if there is none.
    std::string_view m_host;
    std::string_view m_parameters;
};

template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipUsualURL<kStrict>::sTake(KxSipURL& url, KxSipLine& line, KxSipFault& fault) {
    KxSipUsualURL usual(line.window(), line.readableEnd(), url.m_standalone);
    if (!url.m_user.empty() || !usual.find()) {
        return false;
    }
    fault = usual.store(url);
    line.consume(static_cast<std::size_t>(usual.end() - line.window().data()));
    return true;
}

template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipUsualURL<kStrict>::find() {
    return findStart() && findUserAndHost() && findRest();
}

template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipUsualURL<kStrict>::findStart() {
    if (m_end - m_at < 5) {
        return false;
    }
    m_bracket = *m_at == '<';
    m_isBare = m_isBare && !m_bracket;
    m_at += m_bracket || *m_at == ' ' ? 1 : 0; // a blank comes before a Request-URI
    const bool isSip = KxBytes::load<std::uint32_t>(m_at) == KxBytes::load<std::uint32_t>("sip:");
    m_at += 4;
    return isSip;
}

template <bool kStrict>
[[gnu::always_inline]] inline const char* KxSipUsualURL<kStrict>::findDelimiter(const char* from) const {
    return kDelimiters.find(from, m_end, m_readable);
}

/** The end of the digits after `colon`; or `colon` itself if it is none. */
template <bool kStrict>
[[gnu::always_inline]] inline const char* KxSipUsualURL<kStrict>::findPortEnd(const char* colon) {
    m_hasPort = colon != m_end && *colon == ':';
    if (!m_hasPort) {
        return colon;
    }
    const char* at = colon + 1;
    for (m_port = 0; at != m_end && KxAscii::isDigit(*at); ++at) {
        m_port = m_port * 10 + static_cast<std::uint32_t>(*at - '0');
    }
    return at;
}

template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipUsualURL<kStrict>::endsHost(const char* at) const {
    return at == m_end || *at == ';' || *at == '>' || *at == '?' || (*at == '\r' && m_end - at > 1 && at[1] == '\n');
}

template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipUsualURL<kStrict>::findUserAndHost() {
    const char* stop = findDelimiter(m_at);
    const char* end = findPortEnd(stop);
    if (!endsHost(end)) { // then there is a user, or what began as a port is a password
        const char* const at = *end == '@' ? end : findDelimiter(end);
        if (at == m_end || *at != '@' || stop == m_at) {
            return false;
        }
        m_user = textTo(stop);
        if (at != stop) {
            m_at = stop + 1;
            m_password = textTo(at);
        }
        m_at = at + 1;
        stop = findDelimiter(m_at);
        end = findPortEnd(stop);
        if (!endsHost(end)) {
            return false;
        }
    }
    m_host = textTo(stop);
    m_at = end;
    const auto digits = end - stop - 1;
    const bool isPort = !m_hasPort || (digits > 0 && digits <= kMostDigits && (!kStrict || Parts::sIsPort(m_port)));
    return isPort && !m_host.empty() && (!kStrict || KxSipHost::sIsName(m_host));
}

/** Finds what is after host and port. */
template <bool kStrict>
[[gnu::always_inline]] inline bool KxSipUsualURL<kStrict>::findRest() {
    if (m_at != m_end && *m_at == ';') {
        ++m_at;
        if (m_isBare) {
            return !m_user.empty();
        }
        const char* const stop =
            kStrict ? KxBytes::findAny<'>', '?', '@', '"', '\r', '\n', ' ', '\t'>(m_at, m_end, m_readable)
                    : KxBytes::findAny<'>', '?', '@', '"', '\r', '\n'>(m_at, m_end, m_readable);
        m_parameters = textTo(stop);
        m_at = stop;
        if (m_at != m_end && *m_at != '>' && *m_at != '?') {
            return false;
        }
    }
    const char c = m_at == m_end ? '\0' : *m_at;
    if (c == '>') {
        ++m_at;
        if (!kStrict) {
            while (m_at != m_end && (*m_at == ' ' || *m_at == '\t' || *m_at == '\r' || *m_at == '\n')) {
                ++m_at;
            }
            m_at += m_at != m_end && *m_at == ';' ? 1 : 0;
        }
        return true;
    }
    if (c == '?') {
        ++m_at;
        m_hasHeaders = true;
        return !m_user.empty();
    }
    m_at += c == '\r' ? 2 : 0;
    return !kStrict || !m_bracket || c == '\0'; // a bracket that is not closed before the end is a fault
}

template <bool kStrict>
[[gnu::always_inline]] inline KxSipFault KxSipUsualURL<kStrict>::store(KxSipURL& url) {
    if constexpr (kStrict) {
        url.m_form = 0;
    }
    if (!url.m_Scheme.sharesWith(KxSipURL::sToken)) {
        url.m_Scheme = KxSipURL::sToken;
    }
    if (m_hasPort) {
        url.m_port = m_port;
        url.m_hasPort = true;
    }
    if (!m_parameters.empty()) {
        url.m_parameters.write().parse(m_parameters, m_readable);
    }
    if (!m_user.empty()) {
        url.m_user = KxString(m_user);
    }
    if (m_password.data() != nullptr) {
        Parts::sSetPassword(url, m_password);
    }
    url.m_host = KxString(m_host);
    KxSipFault fault;
    if (m_hasHeaders) {
        KxSipURLHeadersParser<kStrict> parser(url, textTo(m_end), m_readable, kStrict && m_isBare);
        fault = parser.parse();
        m_at = parser.end();
    }
    return kStrict && !fault && m_bracket && m_at[-1] != '>' ? Parts::kWrongFormat : fault;
}
