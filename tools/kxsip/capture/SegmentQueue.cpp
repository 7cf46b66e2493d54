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

void SegmentQueue::put(std::uint32_t sequence, std::string_view bytes) {
    const std::uint64_t begin = position(sequence);
    if (begin + bytes.size() <= m_next || begin > m_next + kWindow) {
        return;
    }
    std::string& held = m_waiting[begin];
    if (bytes.size() > held.size()) {
        m_held += bytes.size() - held.size();
        held.append(bytes.substr(held.size()));
    }
}

std::string SegmentQueue::take() {
    std::string bytes;
    while (!m_waiting.empty() && m_waiting.begin()->first <= m_next) {
        const auto& [begin, held] = *m_waiting.begin();
        if (const std::uint64_t end = begin + held.size(); end > m_next) {
            bytes.append(held, static_cast<std::size_t>(m_next - begin));
            m_next = end;
        }
        m_held -= held.size();
        m_waiting.erase(m_waiting.begin());
    }
    return bytes;
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
