#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_set>

/** Knows the last 65,536 messages that it was told, by a hash value of each. */
class PastMessages {
public:
    static std::size_t sHashOf(const std::string& text) { return std::hash<std::string>()(text); }

    void remember(std::size_t hash);
    bool contains(std::size_t hash) const { return m_hashes.contains(hash); }

private:
    std::unordered_set<std::size_t> m_hashes;
    std::deque<std::size_t> m_order;
};
