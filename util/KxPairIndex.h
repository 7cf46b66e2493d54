#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

/** The index of a long KxParameters: at which place each name is, and which places removed pairs have left. To remove a
    pair takes one look-up and moves no other pair. Hashes are KxNameHash::noCase. Internal to this folder. */
class KxPairIndex {
public:
    /** An index of up to `capacity` places; the capacity is a power of two. */
    explicit KxPairIndex(std::uint32_t capacity)
        : m_numberBits(capacity * 2 - 1), m_cells(capacity * 2, 0), m_gaps(capacity + 1, 0) {}

    void clear() {
        m_places = 0;
        std::fill(m_cells.begin(), m_cells.end(), 0);
        std::fill(m_gaps.begin(), m_gaps.end(), 0);
    }

    /** The number of places in use, including those of removed pairs. */
    std::uint32_t places() const { return m_places; }
    /** One number for each place, and one more. At the first and the last place of a gap it is the length of the gap;
        at the place of a pair it is 0. */
    const std::uint32_t* gaps() const { return m_gaps.data(); }

    /** Returns the place plus one, or 0 when the name is absent. */
    template <class Matches>
    std::uint32_t find(std::uint32_t hash, Matches matches) const {
        const std::uint32_t cell = m_cells[findCell(hash, matches)];
        return cell & m_numberBits;
    }
    /** Adds a name at the next place. */
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
        const std::uint32_t after = m_gaps[place + 1];
        m_gaps[place - before] = m_gaps[place + after] = before + 1 + after;
    }

private:
    /** Returns where the cell is, or an empty one. */
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

    std::uint32_t m_numberBits; // mask of the place plus one in a cell; in a hash, of its first cell
    std::uint32_t m_places = 0;
    /** A hash table with open addressing, at most half full. A cell holds the place plus one and, in the bits that no
        place needs, bits of the hash, so that names are compared only when they are likely to be equal. An empty cell
        is 0. In the cell of a removed name only the place bits are 0; the next name that reaches the cell reuses it. */
    std::vector<std::uint32_t> m_cells;
    std::vector<std::uint32_t> m_gaps;
};
