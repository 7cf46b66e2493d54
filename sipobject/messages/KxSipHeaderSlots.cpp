#include "sipobject/messages/KxSipHeaderSlots.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/messages/KxSipLikeness.h"
#include "util/KxOutputStream.h"

#include <algorithm>
#include <new>

KxSipHeaderSlots::KxSipHeaderSlots() : m_near{} {
    m_order[kEnd] = {kEnd, kEnd};
}

KxSipHeaderSlots::~KxSipHeaderSlots() {
    const std::size_t count = std::min<std::size_t>(m_slotCount, kNear);
    for (std::size_t place = 1; place < count; ++place) {
        if (KxSipHeader* const header = m_near[place].get()) {
            leaveIfShared(*header);
            header->Release(true);
        }
    }
    if (m_far != nullptr) {
        std::for_each(m_far->begin(), m_far->end(), emptySlot);
    }
    for (KxSipOwnKinds::Kind& kind : m_own) {
        emptySlot(kind.first);
    }
}

/** Empties a slot. */
inline void KxSipHeaderSlots::emptySlot(KxHandle<KxSipHeader>& first) {
    if (!first.isNil()) {
        leaveIfShared(*first.get());
        first = nullptr;
    }
}

/** Headers that the application still holds are then no longer part of a message. */
inline void KxSipHeaderSlots::leaveIfShared(KxSipHeader& first) {
    if (!first.isUnshared()) [[unlikely]] {
        first.leaveMessage();
    }
}

/** The slot of the kind; a kind without one gets a far slot. */
KxHandle<KxSipHeader>& KxSipHeaderSlots::knownOrFarSlot(HeaderID id) {
    if (m_slotOf[id] == 0) {
        if (m_far == nullptr) {
            m_far = std::make_unique<Far>();
        }
        m_slotOf[id] = m_slotCount++;
    }
    return slot(m_slotOf[id]);
}

void KxSipHeaderSlots::copyFrom(const KxSipHeaderSlots& other) {
    m_order = other.m_order;
    for (HeaderID id = 0; id != kEnd; ++id) {
        if (!other.first(id).isNil()) { // including one that is not in the order
            KxHandle<KxSipHeader>& first = slotFor(id);
            first = other.copyOf(id);
        }
    }
    m_own.copyFrom(other.m_own, [&other](HeaderID id) { return other.copyOf(id); });
}

KxHandle<KxSipHeader> KxSipHeaderSlots::copyOf(HeaderID id) const {
    KxHandle<KxSipHeader> copy;
    KxHandle<KxSipHeader>* end = &copy;
    for (const KxSipHeader* value = first(id).get(); value != nullptr; value = value->m_next.get()) {
        KxHandle<KxSipHeader> next = sMarkedCopy(*value);
        end->swap(next); // it is nil
        end = &end->get()->m_next;
    }
    return copy;
}

void KxSipHeaderSlots::removeFromOrder(HeaderID id) {
    const Link link = m_order[id];
    m_order[link.previous].next = link.next;
    m_order[link.next].previous = link.previous;
    m_own.forgetKind(id, link.previous);
}

void KxSipHeaderSlots::addOwn(KxHandle<KxSipHeader>&& header, bool first) {
    KxHandle<KxSipHeader>& present = ownSlotFor(header->getHeaderID());
    if (!present.isNil()) {
        adoptIntoChain(present, std::move(header), first);
    } else {
        header->joinMessage();
        present = std::move(header);
    }
}

HeaderID KxSipHeaderSlots::addOwnRead(KxHandle<KxSipHeader>&& header) {
    const HeaderID id = header->getHeaderID();
    KxHandle<KxSipHeader>& present = ownSlotFor(id);
    if (!present.isNil()) {
        extendChain(present, std::move(header), false);
        return id;
    }
    present = std::move(header);
    return KxHeaderIDs::kNone;
}

bool KxSipHeaderSlots::addCopyUnlessFirst(const KxSipHeader& value, bool first) {
    return this->first(value.getHeaderID()).get() != &value && add(sCopyOne(value), first);
}

bool KxSipHeaderSlots::addSingle(const KxSipHeader& value, bool first) {
    const bool isFirstOfName = value.isInMessage() && find(value.getToken()).get() == &value;
    return !isFirstOfName && add(sCopyOne(value), first);
}

/** As extendChain, for a header of no message. Allocates memory first, so that a failure changes nothing. */
void KxSipHeaderSlots::adoptIntoChain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first) {
    if (first) {
        header->setInMessage(true); // its own chain is dropped
    } else {
        lastOf(header->getHeaderID());
        header->joinMessage();
    }
    extendChain(slot, std::move(header), first);
}

/** Adds the value before or after the existing ones. */
void KxSipHeaderSlots::extendChain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first) {
    KxSipHeader* const value = header.get();
    const HeaderID id = value->getHeaderID();
    if (first) {
        value->m_next = std::move(slot);
        slot = std::move(header);
    } else {
        lastOf(id)->m_next = std::move(header);
    }
    if (id == KxHeaderIDs::kUnknown) {
        updateNameIndex([=](KxSipNameIndex& names) { first ? names.addFirst(*value) : names.addLast(value); });
    }
}

void KxSipHeaderSlots::addUnlisted(KxHandle<KxSipHeader> header) {
    KxHandle<KxSipHeader>& empty = slotFor(header->getHeaderID());
    header->joinMessage();
    empty = std::move(header);
}

void KxSipHeaderSlots::replace(KxHandle<KxSipHeader> header) {
    if (header->isInMessage()) {
        header = sCopyOne(*header);
    }
    const HeaderID id = header->getHeaderID();
    const bool isOwn = id >= KxHeaderIDs::kCount;
    KxHandle<KxSipHeader>& present = isOwn ? ownSlotFor(id) : slotFor(id);
    header->joinMessage();
    emptySlot(present);
    m_lastRead = nullptr;
    present = std::move(header);
    if (KxSipHeader** const known = nearEnd(id)) {
        *known = nullptr;
    }
    if (!isOwn && !isInOrder(id)) {
        appendToOrder(id);
    }
}

/** Where a value near the end of the kind's chain is cached; null if there is no cache yet. */
KxSipHeader** KxSipHeaderSlots::nearEnd(HeaderID id) {
    if (id >= KxHeaderIDs::kCount) {
        return &m_own.find(id)->nearEnd;
    }
    return m_longChains == nullptr ? nullptr : &m_longChains->nearEnd[id];
}

/** The last value of a chain: found by walking along a short chain, cached for a long one. */
KxSipHeader* KxSipHeaderSlots::lastOf(HeaderID id) {
    if (m_lastRead != nullptr && m_lastRead->getHeaderID() == id && m_lastRead->m_next.isNil()) {
        return m_lastRead;
    }
    KxSipHeader** cache = nearEnd(id);
    KxSipHeader* const known = cache == nullptr ? nullptr : *cache;
    KxSipHeader* last = known == nullptr ? first(id).get() : known;
    int steps = 0;
    for (; !last->m_next.isNil(); ++steps) {
        last = last->m_next.get();
    }
    if (steps > kMaxWalk && cache == nullptr) {
        m_longChains = std::make_unique<LongChains>();
        cache = nearEnd(id);
    }
    if (steps > kMaxWalk || known != nullptr) {
        *cache = last;
    }
    return last;
}

/** Removes the header after `before`, or the first one if `before` is null. The headers after it stay. */
void KxSipHeaderSlots::removeAfter(HeaderID id, KxSipHeader* before) {
    KxHandle<KxSipHeader>& link = before == nullptr ? const_cast<KxHandle<KxSipHeader>&>(first(id)) : before->m_next;
    const KxHandle<KxSipHeader> removed = std::move(link);
    link = std::move(removed->m_next);
    removed->setInMessage(false);
    m_lastRead = m_lastRead == removed.get() ? nullptr : m_lastRead;
    if (KxSipHeader** const known = nearEnd(id); known != nullptr && *known == removed.get()) {
        *known = before;
    }
    if (first(id).isNil()) {
        if (id < KxHeaderIDs::kCount && isInOrder(id)) {
            removeFromOrder(id);
        }
        if (m_longChains != nullptr && id == KxHeaderIDs::kUnknown) {
            m_longChains->names = nullptr;
        }
    }
}

bool KxSipHeaderSlots::removeFirst(HeaderID id) {
    if (first(id).isNil()) {
        return false;
    }
    removeAfter(id, nullptr);
    return true;
}

/** An up-to-date index of the unknown headers; null if there is not enough memory. */
KxSipNameIndex* KxSipHeaderSlots::nameIndex(bool exact) const {
    try {
        if (m_longChains == nullptr) {
            m_longChains = std::make_unique<LongChains>();
        }
        if (m_longChains->names == nullptr || m_longChains->changes != KxSipHeader::sChanges()) {
            m_longChains->names = std::make_unique<KxSipNameIndex>();
            m_longChains->changes = KxSipHeader::sChanges();
            KxSipHeader* const all = first(KxHeaderIDs::kUnknown).get();
            std::size_t count = 0;
            for (const KxSipHeader* header = all; header != nullptr; header = header->m_next.get()) {
                ++count;
            }
            m_longChains->names->reserve(count);
            m_longChains->names->addLast(all);
        }
        if (exact) {
            m_longChains->names->prepareExact();
        }
        return m_longChains->names.get();
    } catch (const std::bad_alloc&) {
        if (m_longChains != nullptr) {
            m_longChains->names = nullptr;
        }
        return nullptr;
    }
}

/** Applies a change to an existing index, or drops the index if memory runs out. */
template <class Change>
void KxSipHeaderSlots::updateNameIndex(Change change) {
    if (m_longChains == nullptr || m_longChains->names == nullptr) {
        return;
    }
    try {
        change(*m_longChains->names);
    } catch (const std::bad_alloc&) {
        m_longChains->names = nullptr;
    }
}

KxSipNameIndex::Found KxSipHeaderSlots::findUnknown(std::string_view name, bool exact) const {
    const std::string_view full = KxSipCompactNames::sFull(name);
    const auto isNamed = [name, full, exact](const KxSipHeader& header) {
        return exact ? header.getToken() == name : KxSipLikeness::sIsNamed(header, full);
    };
    const bool hasIndex = m_longChains != nullptr && m_longChains->names != nullptr;
    Found found{nullptr, first(KxHeaderIDs::kUnknown).get(), {}};
    for (int steps = hasIndex ? kMaxWalk : 0; found.header != nullptr; ++steps) {
        if (steps == kMaxWalk) {
            if (KxSipNameIndex* const index = nameIndex(exact)) {
                return index->find(exact ? name : full, exact);
            }
        }
        if (isNamed(*found.header)) {
            break;
        }
        found.before = std::exchange(found.header, found.header->m_next.get());
    }
    return found;
}

bool KxSipHeaderSlots::removeUnknown(std::string_view name) {
    const Found found = findUnknown(name, false);
    if (found.header == nullptr) {
        return false;
    }
    updateNameIndex([&found](KxSipNameIndex& names) { names.remove(found); });
    removeAfter(KxHeaderIDs::kUnknown, found.before);
    return true;
}

bool KxSipHeaderSlots::remove(std::string_view name) {
    const HeaderID id = findKind(name);
    return id == KxHeaderIDs::kUnknown ? removeUnknown(name) : removeFirst(id);
}

void KxSipHeaderSlots::removeAllLike(const KxSipHeader& header) {
    const HeaderID id = header.getHeaderID();
    while (id == KxHeaderIDs::kUnknown ? removeUnknown(header.getToken()) : removeFirst(id)) {
    }
}

HeaderID KxSipHeaderSlots::findKind(std::string_view name) const {
    HeaderID found = KxHeaderIDs::kUnknown;
    findInOrder([&found, name](HeaderID id, const KxSipHeader& first) {
        const bool isNamed = first.getToken().equalsNoCase(name);
        found = isNamed ? id : found;
        return isNamed;
    });
    if (found == KxHeaderIDs::kUnknown && KxSipGrammar::sFindsHeadersByKind()) {
        const KxHandle<KxSipHeader> sample = KxSipHeader::sSample(name);
        found = sample.isNil() || first(sample->getHeaderID()).isNil() ? found : sample->getHeaderID();
    }
    return found;
}

KxHandle<KxSipHeader> KxSipHeaderSlots::find(std::string_view name) const {
    const HeaderID id = findKind(name);
    return id == KxHeaderIDs::kUnknown
               ? KxHandle<KxSipHeader>(findUnknown(name, !KxSipGrammar::sFindsHeadersByKind()).header)
               : first(id);
}

const KxHandle<KxSipHeader>& KxSipHeaderSlots::firstRead(HeaderID id) const {
    const KxHandle<KxSipHeader>* value = &first(id);
    while (!value->isNil() && KxSipLikeness::sIsUnread(*value->get())) {
        value = &value->get()->m_next;
    }
    return *value;
}

/** The header of firstRead if it is of the class; else null. */
KxSipHeader* KxSipHeaderSlots::firstReadAs(HeaderID id, const std::type_info& type) const {
    KxSipHeader* const header = firstRead(id).get();
    return header != nullptr && typeid(*header) == type ? header : nullptr;
}

void KxSipHeaderSlots::serializeHeaders(KxOutputStream& out) const {
    bool isFirst = true;
    if (KxSipHeader::sTracesLines()) [[unlikely]] {
        findInOrder([&out](HeaderID, const KxSipHeader& first) { return first.serializeLines(out), false; });
    } else {
        findInOrder([&](HeaderID, const KxSipHeader& first)
                        __attribute__((always_inline)) { return first.writeLines(out, isFirst), false; });
    }
    constexpr std::string_view kEnds("\r\n\r\n", 4);
    out.write(isFirst ? kEnds.substr(2) : kEnds);
}

// ---- all headers of a name ----

KxSipHeaderSlots::Named KxSipHeaderSlots::named(std::string_view name) const {
    const KxHandle<KxSipHeader> sample = KxSipHeader::sSample(name);
    if (!sample.isNil() && !KxSipLikeness::sIsUnknown(*sample)) {
        KxSipHeader* value = first(sample->getHeaderID()).get();
        while (value != nullptr && !KxSipLikeness::sAreLike(*value, *sample)) {
            value = value->m_next.get();
        }
        return {value, nullptr};
    }
    const HeaderID id = findKind(name);
    KxSipHeader* const unknown = findUnknown(name, false).header;
    return id == KxHeaderIDs::kUnknown ? Named{unknown, nullptr} : Named{first(id).get(), unknown};
}

KxSipHeader* KxSipHeaderSlots::nextLike(const KxSipHeader& header) const {
    KxSipHeader* next = header.m_next.get();
    for (int steps = 0; next != nullptr && !KxSipLikeness::sAreLike(*next, header); ++steps) {
        if (steps == kMaxWalk && KxSipLikeness::sIsUnknown(header)) {
            if (KxSipNameIndex* const index = nameIndex(false)) {
                return index->next(header);
            }
        }
        next = next->m_next.get();
    }
    return next;
}

std::size_t KxSipHeaderSlots::removeNamed(std::string_view given) {
    const KxString name(given); // it may be the name of a header that is removed
    const Named found = named(name);
    std::size_t removed = 0;
    for (KxSipHeader* const part : {found.first, found.then}) {
        if (part != nullptr && !KxSipLikeness::sIsUnknown(*part)) {
            removed += removeLike(KxHandle<KxSipHeader>(part));
        } else if (part != nullptr) {
            while (removeUnknown(name)) {
                ++removed;
            }
        }
    }
    return removed;
}

/** Holds the header, which is removed too. */
std::size_t KxSipHeaderSlots::removeLike(const KxHandle<KxSipHeader>& like) {
    const HeaderID id = like->getHeaderID();
    if (id == KxHeaderIDs::kUnknown && m_longChains != nullptr) {
        m_longChains->names = nullptr; // a host's class has the identifier of the unknown headers
    }
    std::size_t removed = 0;
    KxSipHeader* before = nullptr;
    for (KxSipHeader* value = first(id).get(); value != nullptr;) {
        KxSipHeader* const next = value->m_next.get();
        if (KxSipLikeness::sAreLike(*value, *like)) {
            removeAfter(id, before);
            ++removed;
        } else {
            before = value;
        }
        value = next;
    }
    return removed;
}
