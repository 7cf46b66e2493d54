#pragma once

#include "core/CoreApi.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace Oskan {

/** The part of FastString that does not depend on its size. */
class KX_CORE_API FastStringBase {
public:
    FastStringBase(const FastStringBase&) = delete;
    FastStringBase& operator=(const FastStringBase&) = delete;

    /** @throws std::bad_alloc when the buffer must grow and there is no memory; the text is then unchanged. */
    void append(char c) {
        if (m_end == m_limit) [[unlikely]] {
            grow(1);
        }
        *m_end++ = c;
    }

    /** @param text may lie within this string. */
    void append(const char* text, std::size_t length) {
        if (static_cast<std::size_t>(m_limit - m_end) < length) [[unlikely]] {
            appendGrowing(text, length);
            return;
        }
        if (length != 0) {
            std::memcpy(m_end, text, length);
        }
        m_end += length;
    }

    void append(std::string_view text) { append(text.data(), text.size()); }

    /** Not NUL-terminated. Valid until the next append or clear. */
    char* data() noexcept { return m_begin; }
    const char* data() const noexcept { return m_begin; }

    /** As data, and NUL-terminated. */
    const char* c_str() const noexcept {
        *m_end = '\0';
        return m_begin;
    }

    std::size_t length() const noexcept { return static_cast<std::size_t>(m_end - m_begin); }
    bool empty() const noexcept { return m_end == m_begin; }
    /** The number of characters that fit before the text must move to a larger buffer. */
    std::size_t capacity() const noexcept { return static_cast<std::size_t>(m_limit - m_begin); }
    std::string_view view() const noexcept { return {m_begin, length()}; }

    /** Empties the text and keeps the buffer. */
    void clear() noexcept { m_end = m_begin; }

protected:
    FastStringBase(char* room, std::size_t capacity) noexcept : m_begin(room), m_end(room), m_limit(room + capacity) {}
    ~FastStringBase() = default;

    void freeHeap() noexcept;

private:
    [[gnu::cold, gnu::noinline]] void grow(std::size_t more);
    [[gnu::cold, gnu::noinline]] void appendGrowing(const char* text, std::size_t length);

    char* m_begin;
    char* m_end;
    char* m_limit; ///< End of the capacity. One more character, for the NUL, follows.
    bool m_onHeap = false;

    template <std::size_t N>
    friend class FastString;
};

} // namespace Oskan
