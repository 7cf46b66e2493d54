#pragma once

#include "core/FastString.h"

#include <cstddef>
#include <string_view>

/** A token of a SIP URL while it is read: a view of the text. It becomes a copy if characters are dropped from its
    middle or come from elsewhere. */
class KxSipURLToken {
public:
    void add(const char* begin, const char* end) {
        if (m_view.empty()) {
            m_view = std::string_view(begin, static_cast<std::size_t>(end - begin));
        } else {
            addMore(begin, end);
        }
    }
    /** Adds a character that is not in the text. */
    void addCopy(char c) {
        copy();
        m_copy.append(c);
        m_view = m_copy.view();
    }
    void clear() { m_view = {}; }
    std::string_view view() const { return m_view; }

private:
    void addMore(const char* begin, const char* end);
    void copy();

    std::string_view m_view;
    Oskan::FastString<256> m_copy;
};
