#include "sipobject/messages/KxSipHeaderSlots.h"

#include <algorithm>
#include <utility>

KxSipHeaderSlots::KxSipHeaderSlots() : m_near{} {
    m_order[kEnd] = {kEnd, kEnd};
}

KxSipHeaderSlots::~KxSipHeaderSlots() {
    for (std::size_t place = 1; place < std::min<std::size_t>(m_used, kNear); ++place) {
        m_near[place] = nullptr;
    }
}

/** The slot that the kind has, or one of the far ones. */
KxHandle<KxSipHeader>& KxSipHeaderSlots::useAgain(HeaderID id) {
    if (m_place[id] == 0) {
        if (m_far == nullptr) {
            m_far = std::make_unique<Far>();
        }
        m_place[id] = m_used++;
    }
    return slot(m_place[id]);
}

void KxSipHeaderSlots::copyFrom(const KxSipHeaderSlots& other) {
    m_order = other.m_order;
    for (HeaderID id = 0; id != kEnd; ++id) {
        if (!other.first(id).isNil()) { // also one that has no place in the order
            use(id) = other.copyOf(id);
        }
    }
}

KxHandle<KxSipHeader> KxSipHeaderSlots::copyOf(HeaderID id) const {
    KxHandle<KxSipHeader> copy;
    KxHandle<KxSipHeader>* end = &copy;
    for (const KxSipHeader* value = first(id).get(); value != nullptr; value = value->m_next.get()) {
        *end = KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(value->clone()));
        end = &(*end)->m_next;
    }
    return copy;
}

void KxSipHeaderSlots::delist(HeaderID id) {
    const Link link = m_order[id];
    m_order[link.previous].next = link.next;
    m_order[link.next].previous = link.previous;
}

/** Hangs the value before or behind those that are there. */
bool KxSipHeaderSlots::chain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first) {
    const HeaderID id = header->getHeaderID();
    KxSipHeader* const last = lastOf(id);
    const KxSipHeader* end = header.get(); // whatever hangs in the chain has its end in common with it
    while (!end->m_next.isNil()) {
        end = end->m_next.get();
    }
    if (end == last) {
        return false;
    }
    if (first) {
        header->m_next = std::move(slot);
        slot = std::move(header);
    } else {
        last->m_next = std::move(header);
    }
    return true;
}

void KxSipHeaderSlots::addUnlisted(KxHandle<KxSipHeader> header) {
    use(header->getHeaderID()) = std::move(header);
}

/** The end of a chain: walked to where it is near, remembered where it is far. */
KxSipHeader* KxSipHeaderSlots::lastOf(HeaderID id) {
    KxSipHeader* last = first(id).get();
    if (m_last != nullptr && !(*m_last)[id].isNil()) {
        last = (*m_last)[id].get();
    }
    int steps = 0;
    for (; !last->m_next.isNil(); ++steps) {
        last = last->m_next.get();
    }
    if (steps > kWalk || (m_last != nullptr && !(*m_last)[id].isNil())) {
        if (m_last == nullptr) {
            m_last = std::make_unique<std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount>>();
        }
        (*m_last)[id] = KxHandle<KxSipHeader>(last);
    }
    return last;
}

void KxSipHeaderSlots::forgetLast(HeaderID id) {
    if (m_last != nullptr) {
        (*m_last)[id] = nullptr;
    }
}

bool KxSipHeaderSlots::removeFirst(HeaderID id) {
    KxHandle<KxSipHeader>& first = slot(m_place[id]);
    if (first.isNil()) {
        return false;
    }
    if (first->m_next.isNil()) {
        forgetLast(id);
        first = nullptr;
        delist(id);
    } else {
        first = KxHandle<KxSipHeader>(first->m_next);
    }
    return true;
}

bool KxSipHeaderSlots::removeUnknown(std::string_view name) {
    KxHandle<KxSipHeader>* link = &slot(m_place[KxHeaderIDs::kUnknown]);
    while (!link->isNil() && !(*link)->getToken().equalsNoCase(name)) {
        link = &(*link)->m_next;
    }
    if (link->isNil()) {
        return false;
    }
    forgetLast(KxHeaderIDs::kUnknown);
    *link = KxHandle<KxSipHeader>((*link)->m_next);
    if (first(KxHeaderIDs::kUnknown).isNil()) {
        delist(KxHeaderIDs::kUnknown);
    }
    return true;
}

HeaderID KxSipHeaderSlots::find(std::string_view token) const {
    for (HeaderID id = firstKind(); id != kEnd; id = nextKind(id)) {
        if (first(id)->getToken().equalsNoCase(token)) {
            return id;
        }
    }
    return KxHeaderIDs::kUnknown;
}
