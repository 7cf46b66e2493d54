#pragma once

#include "util/KxAscii.h"
#include "util/KxBytes.h"

#include <array>
#include <string_view>

/** Maps names to creator functions, ignoring letter case. Filled by static initialisers on the loader's thread and only
    read afterwards, without locking or allocation. A constant-initialised variable of this type is ready before any
    static initialiser runs. The first registration of a name is kept. */
template <class Creator>
class KxNameRegistry {
public:
    constexpr KxNameRegistry() = default;

    /** `name` must live as long as the process. */
    void add(const char* name, Creator creator) {
        const std::string_view text(name);
        if (find(text).creator == nullptr) {
            const KxBytes::Ends ends(text.data(), text.size());
            const Entry*& head = m_buckets[bucket(ends.folded())];
            // never freed, since static destructors may look names up
            head = new Entry{ends.folded(), ends, text, creator, head};
        }
    }

    /** What is registered for a name. */
    struct Found {
        Creator creator = nullptr;        ///< Null if nothing is.
        const char* registered = nullptr; ///< The text that was registered, if the name is exactly that; may be null.
    };

    /** The creator function of a name, or null. Faster if the name is in the letter case that was registered. */
    [[gnu::always_inline]] Found find(std::string_view name) const {
        const KxBytes::Ends ends(name.data(), name.size());
        const Entry* const first = m_buckets[bucket(ends.folded())];
        if (first != nullptr && first->ends == ends &&
            (ends.areWhole() || KxBytes::equal(first->name.data(), name.data(), name.size()))) [[likely]] {
            return {first->creator, first->name.data()};
        }
        return first == nullptr ? Found() : findInBucket(name, first);
    }

    /** Calls f with every name, in no particular order. */
    template <class F>
    void forEachName(F f) const {
        for (const Entry* entry : m_buckets) {
            for (; entry != nullptr; entry = entry->next) {
                f(entry->name);
            }
        }
    }

private:
    /** A name as registered, and its creator function. */
    struct Entry {
        KxBytes::Ends folded;
        KxBytes::Ends ends;
        std::string_view name;
        Creator creator;
        const Entry* next;
    };

    [[gnu::noinline]] static Found findInBucket(std::string_view name, const Entry* first) {
        const KxBytes::Ends folded = KxBytes::Ends(name.data(), name.size()).folded();
        for (const Entry* entry = first; entry != nullptr; entry = entry->next) {
            if (entry->folded == folded && KxAscii::equalsNoCase(entry->name, name)) {
                return {entry->creator, entry->name == name ? entry->name.data() : nullptr};
            }
        }
        return {};
    }

    static constexpr int kBucketBits = 9;

    static std::size_t bucket(const KxBytes::Ends& ends) { return ends.hash(kBucketBits); }

    std::array<const Entry*, std::size_t{1} << kBucketBits> m_buckets{};
};
