#include "sipobject/messages/KxSipHeaderSlots.h"

#include <algorithm>
#include <new>
#include <utility>

KxSipHeaderSlots::KxSipHeaderSlots() : m_near{} {
    m_order[kEnd] = {kEnd, kEnd};
}

KxSipHeaderSlots::~KxSipHeaderSlots() {
    for (std::size_t place = 1; place < std::min<std::size_t>(m_used, kNear); ++place) {
        release(m_near[place]);
    }
    if (m_far != nullptr) {
        std::for_each(m_far->begin(), m_far->end(), release);
    }
}

/** Empties a slot. Headers that the application still holds are then no longer part of a message. */
inline void KxSipHeaderSlots::release(KxHandle<KxSipHeader>& first) {
    if (!first.isNil() && !first.get()->isUnshared()) {
        first.get()->leaveMessage();
    }
    first = nullptr;
}

/** The slot of the kind; a kind without one gets a far slot. */
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
        if (!other.first(id).isNil()) { // including one that is not in the order
            KxHandle<KxSipHeader>& first = use(id);
            first = other.copyOf(id);
            first->joinMessage();
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

/** As chain, for a header that is part of no message. Allocates memory first, so that a failure changes nothing. */
void KxSipHeaderSlots::chainFree(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first) {
    if (first) {
        header->setInMessage(true); // its own chain is dropped
    } else {
        lastOf(header->getHeaderID());
        header->joinMessage();
    }
    chain(slot, std::move(header), first);
}

/** Adds the value before or after the existing ones. */
void KxSipHeaderSlots::chain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first) {
    KxSipHeader* const value = header.get();
    const HeaderID id = value->getHeaderID();
    if (first) {
        value->m_next = std::move(slot);
        slot = std::move(header);
    } else {
        lastOf(id)->m_next = std::move(header);
    }
    if (id == KxHeaderIDs::kUnknown) {
        changeNames([=](KxSipNameIndex& names) { first ? names.addFirst(*value) : names.addLast(value); });
    }
}

void KxSipHeaderSlots::addUnlisted(KxHandle<KxSipHeader> header) {
    KxHandle<KxSipHeader>& empty = use(header->getHeaderID());
    header->joinMessage();
    empty = std::move(header);
}

/** The last value of a chain: found by walking along a short chain, cached for a long one. */
KxSipHeader* KxSipHeaderSlots::lastOf(HeaderID id) {
    KxSipHeader* const known = m_long == nullptr ? nullptr : m_long->last[id];
    KxSipHeader* last = known == nullptr ? first(id).get() : known;
    int steps = 0;
    for (; !last->m_next.isNil(); ++steps) {
        last = last->m_next.get();
    }
    if (steps > kWalk && m_long == nullptr) {
        m_long = std::make_unique<Long>();
    }
    if (steps > kWalk || known != nullptr) {
        m_long->last[id] = last;
    }
    return last;
}

/** Removes the header after `before`, or the first one if `before` is null. The headers after it stay. */
void KxSipHeaderSlots::cut(HeaderID id, KxSipHeader* before) {
    KxHandle<KxSipHeader>& link = before == nullptr ? slot(m_place[id]) : before->m_next;
    const KxHandle<KxSipHeader> removed = std::move(link);
    link = std::move(removed->m_next);
    removed->setInMessage(false);
    if (m_long != nullptr && m_long->last[id] == removed.get()) {
        m_long->last[id] = before;
    }
    if (first(id).isNil()) {
        delist(id);
        if (m_long != nullptr && id == KxHeaderIDs::kUnknown) {
            m_long->names = nullptr;
        }
    }
}

bool KxSipHeaderSlots::removeFirst(HeaderID id) {
    if (first(id).isNil()) {
        return false;
    }
    cut(id, nullptr);
    return true;
}

/** An up-to-date index of the unknown headers; null if there is not enough memory. */
KxSipNameIndex* KxSipHeaderSlots::names(bool exact) const {
    try {
        if (m_long == nullptr) {
            m_long = std::make_unique<Long>();
        }
        if (m_long->names == nullptr || m_long->changes != KxSipHeader::sChanges()) {
            m_long->names = std::make_unique<KxSipNameIndex>();
            m_long->changes = KxSipHeader::sChanges();
            KxSipHeader* const all = first(KxHeaderIDs::kUnknown).get();
            std::size_t count = 0;
            for (const KxSipHeader* header = all; header != nullptr; header = header->m_next.get()) {
                ++count;
            }
            m_long->names->reserve(count);
            m_long->names->addLast(all);
        }
        if (exact) {
            m_long->names->prepareExact();
        }
        return m_long->names.get();
    } catch (const std::bad_alloc&) {
        if (m_long != nullptr) {
            m_long->names = nullptr;
        }
        return nullptr;
    }
}

/** Applies a change to an existing index, or drops the index if memory runs out. */
template <class Change>
void KxSipHeaderSlots::changeNames(Change change) {
    if (m_long == nullptr || m_long->names == nullptr) {
        return;
    }
    try {
        change(*m_long->names);
    } catch (const std::bad_alloc&) {
        m_long->names = nullptr;
    }
}

KxSipHeaderSlots::Place KxSipHeaderSlots::findUnknown(std::string_view name, bool exact) const {
    const auto isNamed = [name, exact](const KxSipHeader& header) {
        return exact ? header.getToken() == name : header.getToken().equalsNoCase(name);
    };
    const bool hasIndex = m_long != nullptr && m_long->names != nullptr;
    Place place{nullptr, first(KxHeaderIDs::kUnknown).get()};
    for (int steps = hasIndex ? kWalk : 0; place.header != nullptr; ++steps) {
        if (steps == kWalk) {
            if (const KxSipNameIndex* const index = names(exact)) {
                const KxSipNameIndex::Node* const node = exact ? index->findExact(name) : index->findNoCase(name);
                return node == nullptr ? Place{}
                                       : Place{KxSipNameIndex::sBefore(*node), KxSipNameIndex::sHeader(*node)};
            }
        }
        if (isNamed(*place.header)) {
            break;
        }
        place = {place.header, place.header->m_next.get()};
    }
    return place;
}

KxHandle<KxSipHeader> KxSipHeaderSlots::findUnknown(std::string_view name) const {
    return KxHandle<KxSipHeader>(findUnknown(name, true).header);
}

bool KxSipHeaderSlots::removeUnknown(std::string_view name) {
    const Place place = findUnknown(name, false);
    if (place.header == nullptr) {
        return false;
    }
    changeNames([&place](KxSipNameIndex& names) { names.remove(*place.header); });
    cut(KxHeaderIDs::kUnknown, place.before);
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
