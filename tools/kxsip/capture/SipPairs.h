#pragma once

#include "tools/kxsip/capture/Flow.h"

#include <set>

/** Remembers which pairs of endpoints have exchanged SIP, in either direction: the latest 32,768 at least, and at most
    twice as many. */
class SipPairs {
public:
    void add(const Flow& flow) {
        if (m_latest.size() == kHalf) {
            m_earlier.swap(m_latest);
            m_latest.clear();
        }
        m_latest.insert(sorted(flow));
    }

    bool has(const Flow& flow) const {
        const Flow pair = sorted(flow);
        return m_latest.contains(pair) || m_earlier.contains(pair);
    }

private:
    static constexpr std::size_t kHalf = 32768;

    static Flow sorted(const Flow& flow) { return std::min(flow, flow.reversed()); }

    std::set<Flow> m_latest;
    std::set<Flow> m_earlier;
};
