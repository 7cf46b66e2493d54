#include "sipobject/auth/KxSipPropertyScanner.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/auth/KxSipAuthParamReader.h"
#include "util/KxBytes.h"
#include "util/KxInputStream.h"

#include <algorithm>

KxSipFault KxSipPropertyScanner::scan(KxInputStream& in) {
    if (KxSipGrammar::sReadsAuthParams()) {
        m_fault = KxSipAuthParamReader(m_properties, m_options.isHidden).read(in, m_options.isLastRequired);
        m_reachedEnd = !m_fault;
        return m_fault;
    }
    return scanLeniently(in);
}

KxSipFault KxSipPropertyScanner::scanLeniently(KxInputStream& in) {
    while (in.fill()) {
        const char* const begin = in.window().data();
        const char* const end = begin + in.window().size();
        for (const char* at = begin; at != end;) {
            if (m_text.empty() && !m_isOpen && !m_isQuoted) {
                at = takePlain(at, end);
            }
            const char* const stop = m_isQuoted ? KxBytes::findAny<'"', ',', '=', '\n'>(at, end)
                                                : KxBytes::findAny<'"', ',', '=', '\n', ' '>(at, end);
            keep(std::string_view(at, static_cast<std::size_t>(stop - at)));
            at = stop;
            const bool isEnded = !m_fault && at != end && !takeSpecial(*at++);
            if (m_fault) {
                return m_fault;
            }
            if (isEnded) {
                in.consume(static_cast<std::size_t>(at - begin));
                return {};
            }
        }
        in.consume(static_cast<std::size_t>(end - begin));
    }
    finish();
    m_reachedEnd = !m_fault;
    return m_fault;
}

/** Reads the plain properties, name=value or name="value" followed by a comma, directly into the list without another
    copy. Most properties are plain. Returns the start of the first property that is not. */
const char* KxSipPropertyScanner::takePlain(const char* at, const char* const end) {
    while (!m_isLineEnded) {
        for (; at != end && *at == ' '; ++at) {
            if (exceedsLimit(1)) {
                return at;
            }
        }
        const char* const equals = KxBytes::findAny<'"', ',', '=', '\n', ' '>(at, end);
        if (end - equals < 2 || *equals != '=') {
            break;
        }
        const std::ptrdiff_t quotes = equals[1] == '"' ? 1 : 0;
        const char* const value = equals + 1 + quotes;
        const char* const valueEnd = quotes != 0 ? KxBytes::findAny<'"', '\n'>(value, end)
                                                 : KxBytes::findAny<'"', ',', '=', '\n', ' '>(value, end);
        const auto kept = static_cast<std::size_t>((equals - at) + (valueEnd - value));
        if (end - valueEnd <= quotes || valueEnd[quotes] != ',' || *valueEnd == '\n' ||
            m_kept + kept >= m_options.limit) {
            break;
        }
        store(std::string_view(at, static_cast<std::size_t>(equals - at)),
              std::string_view(value, static_cast<std::size_t>(valueEnd - value)));
        m_kept += kept;
        at = valueEnd + quotes + 1;
    }
    return at;
}

/** Handles a special character; returns false if reading ends after it. */
bool KxSipPropertyScanner::takeSpecial(char c) {
    switch (c) {
    case '"':
        m_isQuoted = !m_isQuoted;
        return true;
    case ' ':
        return !exceedsLimit(1);
    case '=':
        m_isOpen ? keepUnlimited(c) : endName();
        return true;
    default:
        m_isLineEnded = m_isLineEnded || c == '\n';
        if (m_isQuoted || !m_isOpen) {
            keepUnlimited(c);
            return true;
        }
        endValue();
        return !m_isLineEnded;
    }
}

void KxSipPropertyScanner::keep(std::string_view run) {
    if (!run.empty() && !exceedsLimit(run.size())) {
        m_text.append(run);
        m_kept += run.size();
    }
}

/** Keeps a separator character, which counts towards the limit but is never refused. */
void KxSipPropertyScanner::keepUnlimited(char c) {
    m_text.append(c);
    ++m_kept;
}

/** Whether `more` further characters exceed the limit. If so, sets the fault. */
bool KxSipPropertyScanner::exceedsLimit(std::size_t more) {
    const bool exceeds = m_kept >= m_options.limit || more > m_options.limit - m_kept;
    if (exceeds) {
        m_fault = KxSipFault("Buffer overflew !!!", KxSipFault::Error::Other);
    }
    return exceeds;
}

void KxSipPropertyScanner::store(std::string_view name, std::string_view value) {
    m_properties.setValue(KxAscii::trim(name), KxString(value));
}

void KxSipPropertyScanner::endName() {
    m_nameLength = m_text.length();
    m_isOpen = true;
}

void KxSipPropertyScanner::endValue() {
    store(name(), value());
    m_text.clear();
    m_nameLength = 0;
    m_isOpen = false;
}

void KxSipPropertyScanner::finish() {
    if (m_isOpen && !name().empty() && !value().empty()) {
        if (m_options.lowersLastName) {
            std::transform(m_text.data(), m_text.data() + m_nameLength, m_text.data(), &KxAscii::toLower);
        }
        endValue();
    } else if (m_options.isLastRequired) {
        m_fault = KxSipFault("Failed to parse Proxy-Authenticate SIP header", KxSipFault::Error::Other);
    }
}

std::string_view KxSipPropertyScanner::name() const {
    return KxAscii::trim(m_text.view().substr(0, m_nameLength));
}
