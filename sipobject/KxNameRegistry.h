#pragma once

#include "util/KxAscii.h"
#include "util/KxBytes.h"

#include <array>
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
            const KxBytes::Ends ends = KxBytes::Ends(text.data(), text.size()).folded();
            const Entry*& head = m_buckets[bucket(ends)];
            head = new Entry{ends, text, creator, head}; // never freed: look-ups go on in static destructors
        }
    }

    /** The function, or null. */
    Creator find(std::string_view name) const {
        const KxBytes::Ends ends = KxBytes::Ends(name.data(), name.size()).folded();
        for (const Entry* entry = m_buckets[bucket(ends)]; entry != nullptr; entry = entry->next) {
            if (entry->ends == ends && (KxBytes::equal(entry->name.data(), name.data(), name.size()) ||
                                        KxAscii::equalsNoCase(entry->name, name))) {
                return entry->creator;
            }
        }
        return nullptr;
    }

private:
    struct Entry {
        KxBytes::Ends ends;
        std::string_view name;
        Creator creator;
        const Entry* next;
    };
    static constexpr int kBucketBits = 8;

    static std::size_t bucket(const KxBytes::Ends& ends) { return ends.hash(kBucketBits); }

    std::array<const Entry*, std::size_t{1} << kBucketBits> m_buckets{};
};
