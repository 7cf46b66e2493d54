#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/** What a long KxParameters knows of its places: which name is at which, and which were left by removed pairs. A pair
    is removed without moving any other, in the time of one look-up. Hashes are KxNameHash::noCase. Of this folder only. */
class KxPairIndex {
public:
    /** For up to `capacity` places, a power of two. */
    explicit KxPairIndex(std::uint32_t capacity)
        : m_numberBits(capacity * 2 - 1), m_cells(capacity * 2, 0), m_gaps(capacity + 1, 0) {}

    void clear() {
        m_places = 0;
        std::fill(m_cells.begin(), m_cells.end(), 0);
        std::fill(m_gaps.begin(), m_gaps.end(), 0);
    }

    /** How many places were given out, those of removed pairs included. */
    std::uint32_t places() const { return m_places; }
    /** For each place, and one more: at the first and at the last place of a gap its length, at a pair's place 0. */
    const std::uint32_t* gaps() const { return m_gaps.data(); }

    /** The place plus one, or 0. */
    template <class Matches>
    std::uint32_t find(std::uint32_t hash, Matches matches) const {
        const std::uint32_t cell = m_cells[findCell(hash, matches)];
        return cell & m_numberBits;
    }
    /** Gives out the next place. */
    void append(std::uint32_t hash) {
        std::uint32_t at = hash & m_numberBits;
        while ((m_cells[at] & m_numberBits) != 0) {
            at = next(at);
        }
        m_cells[at] = (hash & ~m_numberBits) | ++m_places;
    }
    void remove(std::uint32_t hash, std::uint32_t place) {
        m_cells[findCell(hash, [place](std::uint32_t other) { return other == place; })] = ~m_numberBits;
        const std::uint32_t before = place == 0 ? 0 : m_gaps[place - 1];
        const std::uint32_t behind = m_gaps[place + 1];
        m_gaps[place - before] = m_gaps[place + behind] = before + 1 + behind;
    }

private:
    /** Where the cell is, or an empty one. */
    template <class Matches>
    std::uint32_t findCell(std::uint32_t hash, Matches matches) const {
        for (std::uint32_t at = hash & m_numberBits;; at = next(at)) {
            const std::uint32_t cell = m_cells[at];
            const std::uint32_t number = cell & m_numberBits;
            if (cell == 0 || (((cell ^ hash) & ~m_numberBits) == 0 && number != 0 && matches(number - 1))) {
                return at;
            }
        }
    }
    std::uint32_t next(std::uint32_t at) const { return (at + 1) & m_numberBits; }

    std::uint32_t m_numberBits; // also where a hash's first cell is
    std::uint32_t m_places = 0;
    /** Open addressing, at most half full: the place plus one and, in the bits that no place needs, some of the hash, so
        that names are looked at only where they are likely to be the one. 0 where nothing is, no place where something
        was, which the next name that comes by takes. */
    std::vector<std::uint32_t> m_cells;
    std::vector<std::uint32_t> m_gaps;
};
