#include "tools/kxsip/capture/Fragments.h"

namespace {

constexpr std::size_t kMostDatagrams = 1024;
constexpr std::size_t kLongestDatagram = 65535;
constexpr std::chrono::seconds kLifetime(30);

} // namespace

std::unique_ptr<Fragments::Whole> Fragments::take(const IpPacket& packet, std::chrono::microseconds now,
                                                  const Packets& carriers) {
    const FragmentPlace& place = *packet.fragment;
    const Datagrams::iterator datagram =
        find({packet.source, packet.destination, packet.protocol, place.datagram}, now);
    add(*datagram, place, packet.payload, carriers);
    if (datagram->end != datagram->held) {
        return nullptr;
    }
    auto whole = std::make_unique<Whole>();
    for (const auto& [offset, piece] : datagram->pieces) {
        whole->bytes += piece.bytes;
        whole->packets.insert(whole->packets.end(), piece.carriers.begin(), piece.carriers.end());
    }
    drop(datagram);
    return whole;
}

Fragments::Datagrams::iterator Fragments::find(const Key& key, std::chrono::microseconds now) {
    const auto known = m_index.find(key);
    if (known != m_index.end()) {
        if (now - known->second->begun <= kLifetime) {
            return known->second;
        }
        drop(known->second);
        ++m_givenUp;
    } else if (m_datagrams.size() == kMostDatagrams) {
        drop(m_datagrams.begin());
        ++m_givenUp;
    }
    m_datagrams.push_back({key, now, {}, 0, {}});
    return m_index[key] = std::prev(m_datagrams.end());
}

void Fragments::drop(Datagrams::iterator datagram) {
    m_index.erase(datagram->key);
    m_datagrams.erase(datagram);
}

void Fragments::add(Datagram& datagram, const FragmentPlace& place, std::string_view bytes, const Packets& carriers) {
    const std::size_t end = place.offset + bytes.size();
    if (bytes.empty() || end > kLongestDatagram || end > datagram.end.value_or(end) ||
        !isFree(datagram, place.offset, end)) {
        return;
    }
    datagram.pieces.emplace(place.offset, Piece{std::string(bytes), carriers});
    datagram.held += bytes.size();
    if (place.isLast && datagram.pieces.rbegin()->first == place.offset) {
        datagram.end = end;
    }
}

bool Fragments::isFree(const Datagram& datagram, std::size_t begin, std::size_t end) {
    const auto next = datagram.pieces.lower_bound(begin);
    if (next != datagram.pieces.end() && next->first < end) {
        return false;
    }
    return next == datagram.pieces.begin() || std::prev(next)->first + std::prev(next)->second.bytes.size() <= begin;
}
