#include "sipobject/address/KxSipURLToken.h"

void KxSipURLToken::addMore(const char* begin, const char* end) {
    const std::string_view more(begin, static_cast<std::size_t>(end - begin));
    if (m_view.data() + m_view.size() == begin) {
        m_view = std::string_view(m_view.data(), m_view.size() + more.size());
    } else if (!more.empty()) {
        copy();
        m_copy.append(more);
        m_view = m_copy.view();
    }
}

/** Copies the view, unless it is the copy. */
void KxSipURLToken::copy() {
    if (m_view.data() != m_copy.data()) {
        m_copy.clear();
        m_copy.append(m_view);
    }
}
