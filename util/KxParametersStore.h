#pragma once

#include "util/KxParameters.h"

#include <new>
#include <utility>

/** The pair of that name, or null. Internal to this folder, as append is. */
inline KxParameters::Pair* KxParameters::find(std::string_view name) {
    if (m_block != nullptr) [[unlikely]] {
        return findIndexed(name);
    }
    Pair* const end = m_inline + m_size;
    for (Pair* pair = m_inline; pair != end; ++pair) {
        if (pair->name.length() == name.size()) {
            return findFrom(pair, end, name);
        }
    }
    return nullptr;
}

inline void KxParameters::append(KxString&& name, KxString&& value) {
    if (m_block != nullptr || m_size == kInline) {
        appendToLong(std::move(name), std::move(value));
        return;
    }
    new (m_inline + m_size) Pair{std::move(name), std::move(value)};
    ++m_size;
}
