#pragma once

#include "util/KxAscii.h"

#include <array>
#include <cstdint>
#include <string_view>

/** Names to creator functions, letter case ignored. Filled by static initialisers on the loader's thread and only read
    afterwards, without a lock and without allocation; a constant-initialised variable of this type is ready before any
    of them runs. The first registration of a name stands. */
template <class Creator>
class KxNameRegistry {
public:
    constexpr KxNameRegistry() = default;

    /** `name` must live as long as the process. */
    void add(const char* name, Creator creator) {
        const std::string_view text(name);
        if (find(text) == nullptr) {
            Entry*& head = m_buckets[KxAscii::hashNoCase(text) % kBuckets];
            head = new Entry{text, creator, head}; // never freed: look-ups go on in static destructors
        }
    }

    /** The function, or null. */
    Creator find(std::string_view name) const {
        for (const Entry* entry = m_buckets[KxAscii::hashNoCase(name) % kBuckets]; entry != nullptr;
             entry = entry->next) {
            if (entry->name == name || KxAscii::equalsNoCase(entry->name, name)) {
                return entry->creator;
            }
        }
        return nullptr;
    }

private:
    struct Entry {
        std::string_view name;
        Creator creator;
        const Entry* next;
    };
    static constexpr std::size_t kBuckets = 256;

    std::array<Entry*, kBuckets> m_buckets{};
};
