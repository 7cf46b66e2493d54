#include "core/FastStringBase.h"

#include "core/MemAccount.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace Oskan {

namespace {

constinit MemAccount s_account{"FastStringAccount"};

} // namespace

void FastStringBase::grow(std::size_t more) {
    const std::size_t used = length();
    if (more > PTRDIFF_MAX / 2 - used) {
        throw std::bad_alloc();
    }
    const std::size_t room = std::max(used + more, 2 * capacity());
    char* const text = static_cast<char*>(s_account.allocate(room + 1));
    std::memcpy(text, m_begin, used);
    freeHeap();
    m_begin = text;
    m_end = text + used;
    m_limit = text + room;
    m_onHeap = true;
}

void FastStringBase::appendGrowing(const char* text, std::size_t length) {
    const std::size_t used = this->length();
    // The text may lie in the buffer that grow() frees.
    const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(m_begin);
    const bool own = offset <= used;
    grow(length);
    std::memcpy(m_end, own ? m_begin + offset : text, length);
    m_end += length;
}

void FastStringBase::freeHeap() noexcept {
    if (m_onHeap) {
        s_account.deallocate(m_begin);
    }
}

} // namespace Oskan
