#include "sipobject/messages/KxSipHeaderSlots.h"

#include <bit>
#include <utility>

KxSipHeaderSlots::KxSipHeaderSlots() : m_slots{} {
    m_order[kEnd] = {kEnd, kEnd};
}

KxSipHeaderSlots::~KxSipHeaderSlots() {
    for (std::uint64_t used = m_used; used != 0; used &= used - 1) {
        m_slots[static_cast<HeaderID>(std::countr_zero(used))] = nullptr;
    }
}

void KxSipHeaderSlots::copyFrom(const KxSipHeaderSlots& other) {
    m_order = other.m_order;
    for (std::uint64_t used = other.m_used; used != 0; used &= used - 1) {
        const auto id = static_cast<HeaderID>(std::countr_zero(used));
        use(id) = other.copyOf(id);
    }
}

KxHandle<KxSipHeader> KxSipHeaderSlots::copyOf(HeaderID id) const {
    KxHandle<KxSipHeader> copy;
    KxHandle<KxSipHeader>* end = &copy;
    for (const KxSipHeader* value = m_slots[id].get(); value != nullptr; value = value->m_next.get()) {
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
    KxSipHeader* last = m_slots[id].get();
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
    KxHandle<KxSipHeader>& slot = m_slots[id];
    if (slot.isNil()) {
        return false;
    }
    if (slot->m_next.isNil()) {
        forgetLast(id);
        slot = nullptr;
        delist(id);
    } else {
        slot = KxHandle<KxSipHeader>(slot->m_next);
    }
    return true;
}

bool KxSipHeaderSlots::removeUnknown(std::string_view name) {
    KxHandle<KxSipHeader>* link = &m_slots[KxHeaderIDs::kUnknown];
    while (!link->isNil() && !(*link)->getToken().equalsNoCase(name)) {
        link = &(*link)->m_next;
    }
    if (link->isNil()) {
        return false;
    }
    forgetLast(KxHeaderIDs::kUnknown);
    *link = KxHandle<KxSipHeader>((*link)->m_next);
    if (m_slots[KxHeaderIDs::kUnknown].isNil()) {
        delist(KxHeaderIDs::kUnknown);
    }
    return true;
}

HeaderID KxSipHeaderSlots::find(std::string_view token) const {
    for (HeaderID id = firstKind(); id != kEnd; id = nextKind(id)) {
        if (m_slots[id]->getToken().equalsNoCase(token)) {
            return id;
        }
    }
    return KxHeaderIDs::kUnknown;
}
