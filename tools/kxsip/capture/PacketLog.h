#pragma once

#include "tools/kxsip/capture/Packet.h"

#include <cstddef>
#include <list>

/** The packets that carried the latest bytes of a stream. Empty, and without memory, if packets are not kept. */
class PacketLog {
public:
    /** Adds the packets that carried the next `count` bytes of the stream. */
    void add(std::size_t count, const Packets& carriers) {
        m_end += count;
        if (!carriers.empty()) {
            m_entries.push_back({m_end - count, m_end, carriers});
        }
    }

    /** Returns the packets that carried the bytes of the stream from `begin` to `end`. */
    Packets find(std::size_t begin, std::size_t end) const {
        Packets found;
        for (const Entry& entry : m_entries) {
            if (entry.begin < end && entry.end > begin) {
                found.insert(found.end(), entry.carriers.begin(), entry.carriers.end());
            }
        }
        return found;
    }

    /** Drops what carried only bytes before `begin`. */
    void dropBefore(std::size_t begin) {
        while (!m_entries.empty() && m_entries.front().end <= begin) {
            m_entries.pop_front();
        }
    }

private:
    struct Entry {
        std::size_t begin;
        std::size_t end;
        Packets carriers;
    };

    std::list<Entry> m_entries; // an empty list takes no memory, which a deque does
    std::size_t m_end = 0;
};
