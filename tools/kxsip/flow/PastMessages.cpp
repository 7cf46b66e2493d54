#include "tools/kxsip/flow/PastMessages.h"

void PastMessages::remember(std::size_t hash) {
    constexpr std::size_t kMost = 65536;
    if (!m_hashes.insert(hash).second) {
        return;
    }
    m_order.push_back(hash);
    if (m_order.size() > kMost) {
        m_hashes.erase(m_order.front());
        m_order.pop_front();
    }
}
