#include "sipobject/messages/KxSipNameIndex.h"

#include "sipobject/headers/KxSipCompactNames.h"
#include "sipobject/headers/KxSipHeader.h"

#include <memory>

static KxString nameOf(const KxSipHeader& header) {
    const std::string_view full = KxSipCompactNames::sFull(header.getToken());
    return full.data() == header.getToken().c_str() ? header.getToken() : KxString(full);
}

struct KxSipNameIndex::Node {
    KxSipHeader* header;
    KxString name;
    std::array<Pair, kOrders> neighbours; ///< In each order: the previous node (first) and the next one (last).
};

KxSipNameIndex::~KxSipNameIndex() {
    for (const Node* node = m_chain.first; node != nullptr;) {
        const std::unique_ptr<const Node> gone(node);
        node = node->neighbours[kChain].last;
    }
}

void KxSipNameIndex::addLast(KxSipHeader* header) {
    for (; header != nullptr; header = header->getNext().get()) {
        add(*header, false);
    }
}

void KxSipNameIndex::add(KxSipHeader& header, bool first) {
    auto node = std::unique_ptr<Node>(new Node{&header, nameOf(header), {}});
    Pair& noCase = m_noCase[node->name];
    if (m_hasExact) {
        link(m_exact[node->name], *node, kExact, first);
    }
    link(noCase, *node, kNoCase, first);
    link(m_chain, *node.release(), kChain, first);
}

void KxSipNameIndex::link(Pair& ends, Node& node, Order order, bool first) {
    Node*& end = first ? ends.first : ends.last;
    node.neighbours[order] = first ? Pair{nullptr, end} : Pair{end, nullptr};
    if (end == nullptr) {
        ends = {&node, &node};
        return;
    }
    (first ? end->neighbours[order].first : end->neighbours[order].last) = &node;
    end = &node;
}

void KxSipNameIndex::unlink(Pair& ends, Node& node, Order order) {
    const auto [before, after] = node.neighbours[order];
    (before == nullptr ? ends.first : before->neighbours[order].last) = after;
    (after == nullptr ? ends.last : after->neighbours[order].first) = before;
}

/** Takes the first node out of a group. */
template <class Groups>
KxSipNameIndex::Node* KxSipNameIndex::removeFirst(Groups& groups, typename Groups::iterator group, Order order) {
    Node* const node = group->second.first;
    unlink(group->second, *node, order);
    if (group->second.first == nullptr) {
        groups.erase(group);
    }
    return node;
}

void KxSipNameIndex::prepareExact() {
    if (m_hasExact) {
        return;
    }
    m_exact.clear(); // of an attempt without memory
    m_exact.reserve(m_noCase.size());
    for (Node* node = m_chain.first; node != nullptr; node = node->neighbours[kChain].last) {
        link(m_exact[node->name], *node, kExact, false);
    }
    m_hasExact = true;
}

/** Headers and nodes are spread over the memory, so the processor is told early what will be looked at. */
KxSipNameIndex::Found KxSipNameIndex::find(std::string_view name, bool exact) {
    NoCase::iterator group{};
    const Node* node = nullptr;
    if (exact) {
        const auto found = m_exact.find(name);
        node = found == m_exact.end() ? nullptr : found->second.first;
    } else {
        group = m_noCase.find(name);
        node = group == m_noCase.end() ? nullptr : group->second.first;
    }
    if (node == nullptr) {
        return {};
    }
    const auto [before, after] = node->neighbours[kChain];
    __builtin_prefetch(node->header);
    __builtin_prefetch(after);
    return {before == nullptr ? nullptr : before->header, node->header, group};
}

KxSipHeader* KxSipNameIndex::next(const KxSipHeader& header) {
    const auto findFrom = [&header](const Node* node) {
        while (node != nullptr && node->header != &header) {
            node = node->neighbours[kNoCase].last;
        }
        return node;
    };
    const KxString name = nameOf(header);
    const Node* node = m_lastNext == nullptr || !name.equalsNoCase(m_lastNext->name) ? nullptr : findFrom(m_lastNext);
    if (node == nullptr) {
        const auto group = m_noCase.find(name);
        node = group == m_noCase.end() ? nullptr : findFrom(group->second.first);
    }
    m_lastNext = node == nullptr ? nullptr : node->neighbours[kNoCase].last;
    return m_lastNext == nullptr ? nullptr : m_lastNext->header;
}

void KxSipNameIndex::remove(const Found& found) {
    const std::unique_ptr<Node> gone(removeFirst(m_noCase, found.group, kNoCase));
    if (m_hasExact) {
        removeFirst(m_exact, m_exact.find(gone->name), kExact);
    }
    unlink(m_chain, *gone, kChain);
    m_lastNext = m_lastNext == gone.get() ? nullptr : m_lastNext;
}
