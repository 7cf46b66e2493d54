#pragma once

#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/messages/KxSipNameIndex.h"
#include "sipobject/messages/KxSipOwnKinds.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <typeinfo>
#include <utility>

/** The headers of a message: a slot for each kind, which holds the first value with the others chained after it, and
    the order in which the kinds were first added. Kinds of a host's own are in a list beside the slots. Independent of
    start lines and bodies. Does not lock: it is used by one thread at a time, even for looking up names, which updates
    a cache. */
class KxSipHeaderSlots {
public:
    KxSipHeaderSlots();
    ~KxSipHeaderSlots();
    KxSipHeaderSlots(const KxSipHeaderSlots&) = delete;
    KxSipHeaderSlots& operator=(const KxSipHeaderSlots&) = delete;

    /** Stores a deep copy of the other's headers. All slots must be empty. */
    void copyFrom(const KxSipHeaderSlots& other);

    /** The first value of a kind; nil when there is none. The slot does not move as long as the message exists. */
    const KxHandle<KxSipHeader>& first(HeaderID id) const {
        return id < KxHeaderIDs::kCount ? slot(m_slotOf[id]) : firstOwn(id);
    }
    /** The first value of a kind that is no KxSipUnreadHeader; nil when there is none. */
    const KxHandle<KxSipHeader>& firstRead(HeaderID id) const;
    /** The first value of the kind of H, apart from each KxSipUnreadHeader; nil when there is none, or if it is of
        another class. */
    template <class H>
    KxHandle<H> typed() const {
        return KxHandle<H>(findTyped<H>());
    }
    /** As typed, without a reference; null when there is none. */
    template <class H>
    H* findTyped() const {
        KxSipHeader* const header = first(H::kHeaderID).get();
        const bool isOther = header != nullptr && typeid(*header) != typeid(H);
        return static_cast<H*>(isOther ? firstReadAs(H::kHeaderID, typeid(H)) : header);
    }
    /** The kind whose first value is written under the name, ignoring letter case; kUnknown if there is none. In the
        RFC grammar also the kind in this message whose class is registered for the name. */
    HeaderID findKind(std::string_view name) const;
    /** The first value of that kind; if there is none, the first unknown header with exactly that name, or nil. In the
        RFC grammar letter case does not matter, and the name may be the full or the compact one. */
    KxHandle<KxSipHeader> find(std::string_view name) const;

    /** Adds the value as the first of its kind (existing values then replace its own chain), or after the last one,
        with its chain if no value of that is part of a message. Adds a copy of a value that is part of a message.
        Returns false and changes nothing if the value is the first of its kind here. */
    bool add(KxHandle<KxSipHeader>&& header, bool first) {
        KxSipHeader& value = *header.get();
        if (value.isInMessage()) [[unlikely]] {
            return addCopyUnlessFirst(value, first);
        }
        if (value.getHeaderID() >= KxHeaderIDs::kCount) [[unlikely]] {
            return addOwn(std::move(header), first), true;
        }
        KxHandle<KxSipHeader>& present = slotFor(value.getHeaderID());
        if (!present.isNil()) {
            adoptIntoChain(present, std::move(header), first);
        } else {
            value.joinMessage();
            startChain(present, std::move(header));
        }
        return true;
    }
    /** Adds a copy of the value, without its chain. Returns false and changes nothing if the value is the first one
        under its name here. */
    bool addSingle(const KxSipHeader& value, bool first);
    /** Adds a header that was just read or copied, and is already marked as part of a message, after the last of its
        kind. Returns its kind if there was one; else kNone. */
    HeaderID addRead(KxHandle<KxSipHeader>&& header) {
        if (header.get()->getHeaderID() >= KxHeaderIDs::kCount) [[unlikely]] {
            return addOwnRead(std::move(header));
        }
        const HeaderID id = header.get()->getHeaderID();
        KxHandle<KxSipHeader>& present = slotFor(id);
        KxSipHeader* const read = header.get();
        if (!present.isNil()) {
            extendChain(present, std::move(header), false);
            m_lastRead = read;
            return id;
        }
        startChain(present, std::move(header));
        m_lastRead = read;
        return KxHeaderIDs::kNone;
    }
    /** Puts the value into an empty slot but does not add its kind to the order, so that it is not written. */
    void addUnlisted(KxHandle<KxSipHeader> header);
    /** A deep copy of the value, without its chain. */
    static KxHandle<KxSipHeader> sCopyOne(const KxSipHeader& value) {
        return KxHandle<KxSipHeader>::sOfNew(static_cast<KxSipHeader*>(value.clone()));
    }
    /** A deep copy of all values of a kind, chained in their order; nil when there are none. The copies are already
        marked as part of a message. */
    KxHandle<KxSipHeader> copyOf(HeaderID id) const;
    /** As copyOf, of the first value only. */
    KxHandle<KxSipHeader> copyOfFirst(HeaderID id) const {
        const KxSipHeader* const value = first(id).get();
        return value == nullptr ? KxHandle<KxSipHeader>() : sMarkedCopy(*value);
    }

    /** Adds the value, or a copy of one that is part of a message, in place of all values of its kind. */
    void replace(KxHandle<KxSipHeader> header);
    /** Removes the first value of a kind. The values after it stay. Returns false if there is none. */
    bool removeFirst(HeaderID id);
    /** Removes the first value of the kind that findKind returns, or the first unknown header of that name (see
        nextLike). The values after it stay. Returns false if there is none. */
    bool remove(std::string_view name);
    /** Removes all values of the header's kind; for an unknown header, all with its name (see nextLike). */
    void removeAllLike(const KxSipHeader& header);

    /** Writes all values, one line each, in the order of the kinds, and an empty line. */
    void serializeHeaders(KxOutputStream& out) const;

    /** What a name means in this message. */
    struct Named {
        KxSipHeader* first = nullptr; ///< The first value, from which nextLike leads to the others.
        KxSipHeader* then = nullptr;  ///< The first one after those, from which nextLike continues.
    };
    /** The values of the class that is registered for the name, with what is kept as text of them; for other names,
        those written under it: the values of a class that is not registered, then the unknown headers. Letter case is
        ignored, and in the RFC grammar a compact name is its full name. */
    Named named(std::string_view name) const;
    /** The next header of the chain with the class of this one, or kept as text of one, and, if it is an unknown
        header, with its name, compared as by `named`; null if there is none. */
    KxSipHeader* nextLike(const KxSipHeader& header) const;
    /** Removes what `named` returns, and returns how many that were. */
    std::size_t removeNamed(std::string_view name);

    /** Calls f with each kind in the order and its first value, until f returns true; returns whether it did. */
    template <class F>
    bool findInOrder(F f) const {
        HeaderID id = m_order[kEnd].next;
        const auto findBefore = [&](HeaderID stop) {
            for (; id != stop; id = m_order[id].next) {
                if (f(id, *slot(m_slotOf[id]).get())) {
                    return true;
                }
            }
            return false;
        };
        for (const KxSipOwnKinds::Kind& own : m_own) {
            if (findBefore(m_order[own.after].next) || (!own.first.isNil() && f(own.id, *own.first))) {
                return true;
            }
        }
        return findBefore(kEnd);
    }

private:
    static constexpr HeaderID kEnd = KxHeaderIDs::kCount; ///< The place in m_order between the last kind and the first.

    /** The end of a chain longer than this is cached, and names further along the chain are looked up in an index. */
    static constexpr int kMaxWalk = 8;
    /** Cached positions in long chains, so that a chain is not walked again for each operation. */
    struct LongChains {
        std::array<KxSipHeader*, KxHeaderIDs::kCount> nearEnd{}; ///< Values near the ends of the chains, or null.
        std::unique_ptr<KxSipNameIndex> names;                   ///< Index of the unknown headers.
        std::uint32_t changes = 0;                               ///< KxSipHeader::sChanges() when the index was made.
    };
    using Found = KxSipNameIndex::Found;
    struct Link {
        std::uint8_t previous;
        std::uint8_t next;
    };

    /** The number of slots inside the object. Few messages need more. */
    static constexpr std::size_t kNear = 20;
    using Far = std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount + 1 - kNear>;

    /** A copy of the value that is already marked as part of a message. */
    static KxHandle<KxSipHeader> sMarkedCopy(const KxSipHeader& value) {
        KxHandle<KxSipHeader> copy = sCopyOne(value);
        copy.get()->setInMessage(true);
        return copy;
    }
    const KxHandle<KxSipHeader>& slot(std::size_t place) const {
        return place < kNear ? m_near[place] : (*m_far)[place - kNear];
    }
    KxHandle<KxSipHeader>& slot(std::size_t place) {
        return const_cast<KxHandle<KxSipHeader>&>(std::as_const(*this).slot(place));
    }
    /** The slot of a kind; a kind without one gets one. */
    KxHandle<KxSipHeader>& slotFor(HeaderID id) {
        if (m_slotOf[id] != 0 || m_slotCount >= kNear) {
            return knownOrFarSlot(id);
        }
        m_slotOf[id] = m_slotCount;
        return m_near[m_slotCount++];
    }
    KxHandle<KxSipHeader>& knownOrFarSlot(HeaderID id);
    KxSipHeader* firstReadAs(HeaderID id, const std::type_info& type) const;
    /** The slot of a host's own kind; a kind without values becomes the last one in the order. */
    KxHandle<KxSipHeader>& ownSlotFor(HeaderID id) { return m_own.findOrAppend(id, m_order[kEnd].previous).first; }
    [[gnu::noinline]] const KxHandle<KxSipHeader>& firstOwn(HeaderID id) const {
        OSKAN_ASSERT(KxSipHeader::sIsHeaderID(id));
        const KxSipOwnKinds::Kind* const kind = m_own.find(id);
        return kind == nullptr ? m_near[0] : kind->first;
    }
    void addOwn(KxHandle<KxSipHeader>&& header, bool first);
    HeaderID addOwnRead(KxHandle<KxSipHeader>&& header);
    bool addCopyUnlessFirst(const KxSipHeader& value, bool first);
    void appendToOrder(HeaderID id) {
        const std::uint8_t last = m_order[kEnd].previous;
        m_order[id] = {last, kEnd};
        m_order[last].next = static_cast<std::uint8_t>(id);
        m_order[kEnd].previous = static_cast<std::uint8_t>(id);
    }
    void startChain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header) {
        slot.swap(header); // the slot is empty
        appendToOrder(slot.get()->getHeaderID());
    }
    void adoptIntoChain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first);
    void extendChain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first);
    static void emptySlot(KxHandle<KxSipHeader>& first);
    static void leaveIfShared(KxSipHeader& first);
    bool isInOrder(HeaderID id) const { return m_order[m_order[id].previous].next == id; }
    void removeFromOrder(HeaderID id);
    void removeAfter(HeaderID id, KxSipHeader* before);
    KxSipHeader** nearEnd(HeaderID id);
    KxSipHeader* lastOf(HeaderID id);
    KxSipNameIndex* nameIndex(bool exact) const;
    Found findUnknown(std::string_view name, bool exact) const;
    bool removeUnknown(std::string_view name);
    std::size_t removeLike(const KxHandle<KxSipHeader>& like);
    template <class Change>
    void updateNameIndex(Change change);

    std::array<std::uint8_t, KxHeaderIDs::kCount>
        m_slotOf{};                                      // the slot of each kind; 0, whose slot is always nil, for none
    std::uint8_t m_slotCount = 1;                        // number of slots, including the nil one
    std::array<Link, KxHeaderIDs::kCount + 1> m_order{}; // a ring that includes kEnd; here, so that nothing is padded
    union {
        std::array<KxHandle<KxSipHeader>, kNear> m_near; // in a union, so that unused slots are not destroyed
    };
    std::unique_ptr<Far> m_far;
    KxSipOwnKinds m_own;
    KxSipHeader* m_lastRead = nullptr;                // the value that addRead added last, while it is here
    mutable std::unique_ptr<LongChains> m_longChains; // created for the first long chain
};
