#pragma once

#include "tools/kxsip/capture/IpPacket.h"
#include "tools/kxsip/capture/Packet.h"

#include <chrono>
#include <list>
#include <map>
#include <tuple>

/** Joins the fragments of IPv4 and IPv6 datagrams. Of fragments that overlap, the first is used [RFC 5722]. Holds at
    most 1,024 incomplete datagrams of at most 64 KiB; the oldest is given up for a new one. A fragment is not added to
    a datagram that began more than 30 seconds before it, since identifiers are used again. */
class Fragments {
public:
    /** The payload of a datagram, and the packets of its fragments if they are kept. */
    struct Whole {
        std::string bytes;
        Packets packets;
    };

    /** Takes a fragment, and the packets that carried it if they are kept. Returns the datagram if it is now complete,
        else null. */
    std::unique_ptr<Whole> take(const IpPacket& packet, std::chrono::microseconds now, const Packets& carriers);

    /** Returns the number of datagrams that were given up or are still incomplete. */
    std::size_t unfinished() const { return m_givenUp + m_datagrams.size(); }

private:
    using Key = std::tuple<IpAddress, IpAddress, std::uint8_t, std::uint32_t>;
    struct Piece {
        std::string bytes;
        Packets carriers;
    };
    struct Datagram {
        Key key;
        std::chrono::microseconds begun;
        std::map<std::size_t, Piece> pieces; ///< By offset; they don't overlap.
        std::size_t held = 0;                ///< Bytes of all pieces.
        std::optional<std::size_t> end;      ///< Known when the last fragment has come.
    };
    using Datagrams = std::list<Datagram>; // in the order in which they began

    Datagrams::iterator find(const Key& key, std::chrono::microseconds now);
    void drop(Datagrams::iterator datagram);
    static void add(Datagram& datagram, const FragmentPlace& place, std::string_view bytes, const Packets& carriers);
    static bool isFree(const Datagram& datagram, std::size_t begin, std::size_t end);

    Datagrams m_datagrams;
    std::map<Key, Datagrams::iterator> m_index;
    std::size_t m_givenUp = 0;
};
