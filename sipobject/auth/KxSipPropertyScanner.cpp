#include "sipobject/auth/KxSipPropertyScanner.h"

#include "util/KxBytes.h"
#include "util/KxException.h"
#include "util/KxInputStream.h"

#include <algorithm>

bool KxSipPropertyScanner::scan(KxInputStream& in) {
    while (in.fill()) {
        const char* const begin = in.window().data();
        const char* const end = begin + in.window().size();
        for (const char* at = begin; at != end;) {
            const char* const stop = m_isQuoted ? KxBytes::findAny<'"', ',', '=', '\n'>(at, end)
                                                : KxBytes::findAny<'"', ',', '=', '\n', ' '>(at, end);
            keep(std::string_view(at, static_cast<std::size_t>(stop - at)));
            at = stop;
            if (at != end && !takeSpecial(*at++)) {
                in.consume(static_cast<std::size_t>(at - begin));
                return false;
            }
        }
        in.consume(static_cast<std::size_t>(end - begin));
    }
    finish();
    return true;
}

/** False when reading ends here. */
bool KxSipPropertyScanner::takeSpecial(char c) {
    switch (c) {
    case '"':
        m_isQuoted = !m_isQuoted;
        return true;
    case ' ':
        refuseBeyondLimit(1);
        return true;
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
    if (!run.empty()) {
        refuseBeyondLimit(run.size());
        m_text.append(run);
        m_kept += run.size();
    }
}

/** What separates properties counts, but is never too much. */
void KxSipPropertyScanner::keepUnlimited(char c) {
    m_text.append(c);
    ++m_kept;
}

void KxSipPropertyScanner::refuseBeyondLimit(std::size_t more) const {
    if (m_kept >= m_options.limit || more > m_options.limit - m_kept) {
        KxException::sThrow("Buffer overflew !!!");
    }
}

void KxSipPropertyScanner::endName() {
    m_nameLength = m_text.length();
    m_isOpen = true;
}

void KxSipPropertyScanner::endValue() {
    m_properties.setValue(name(), KxString(value()));
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
        KxException::sThrow("Failed to parse Proxy-Authenticate SIP header");
    }
}

std::string_view KxSipPropertyScanner::name() const {
    return KxAscii::trim(m_text.view().substr(0, m_nameLength));
}
