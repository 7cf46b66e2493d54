#include "tools/kxsip/capture/SegmentQueue.h"

namespace {

constexpr std::size_t kMostBytes = 256U << 10;
constexpr std::size_t kMostSegments = 1024;
constexpr std::uint64_t kWindow = 1U << 30; // the largest window [RFC 7323 2.3]

} // namespace

std::uint64_t SegmentQueue::position(std::uint32_t sequence) const {
    const auto distance = static_cast<std::int32_t>(sequence - static_cast<std::uint32_t>(m_next));
    return m_next + static_cast<std::uint64_t>(std::int64_t{distance});
}

void SegmentQueue::put(std::uint32_t sequence, std::string_view bytes, const Packets& carriers) {
    const std::uint64_t begin = position(sequence);
    if (begin + bytes.size() <= m_next || begin > m_next + kWindow) {
        return;
    }
    Segment& held = m_waiting[begin];
    if (bytes.size() > held.bytes.size()) {
        m_held += bytes.size() - held.bytes.size();
        held.bytes.append(bytes.substr(held.bytes.size()));
        held.carriers = carriers; // of the longer segment, which has all of the bytes
    }
}

std::optional<SegmentQueue::Segment> SegmentQueue::take() {
    while (!m_waiting.empty() && m_waiting.begin()->first <= m_next) {
        const auto first = m_waiting.extract(m_waiting.begin());
        Segment& held = first.mapped();
        const std::uint64_t end = first.key() + held.bytes.size();
        m_held -= held.bytes.size();
        if (end > m_next) {
            held.bytes.erase(0, static_cast<std::size_t>(m_next - first.key()));
            m_next = end;
            return std::move(held);
        }
    }
    return std::nullopt;
}

bool SegmentQueue::isFull() const {
    return m_held > kMostBytes || m_waiting.size() > kMostSegments;
}

bool SegmentQueue::isWaitingAcknowledged(std::uint32_t acknowledgement) const {
    return isWaiting() && position(acknowledgement) > m_waiting.begin()->first;
}

void SegmentQueue::skipGap() {
    m_next = m_waiting.begin()->first;
}
