#pragma once

#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/messages/KxSipNameIndex.h"

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

/** The headers of a message: a slot for each kind, holding the first value with the others chained behind it, and the
    order in which the kinds first came. Knows nothing of start lines, bodies or locks: looking up names changes what it
    remembers, so that too is done by one thread at a time. */
class KxSipHeaderSlots {
public:
    KxSipHeaderSlots();
    ~KxSipHeaderSlots();
    KxSipHeaderSlots(const KxSipHeaderSlots&) = delete;
    KxSipHeaderSlots& operator=(const KxSipHeaderSlots&) = delete;

    /** Fills the empty slots with a deep copy. */
    void copyFrom(const KxSipHeaderSlots& other);

    /** Nil when there is none. Stays where it is as long as the message. */
    const KxHandle<KxSipHeader>& first(HeaderID id) const { return slot(m_place[id]); }

    /** Puts the value in: first, with what was there before after it and its own chain dropped, or last, with the
        chain it carries where all of that is free. False, and nothing changes, when it is part of a message already. */
    bool add(KxHandle<KxSipHeader>&& header, bool first) {
        KxSipHeader& value = *header.get();
        if (value.isInMessage()) [[unlikely]] {
            return false;
        }
        KxHandle<KxSipHeader>& present = use(value.getHeaderID());
        if (!present.isNil()) {
            chainFree(present, std::move(header), first);
        } else {
            value.joinMessage();
            begin(present, std::move(header));
        }
        return true;
    }
    /** Puts in what was just read, which is marked as part of a message. */
    void addRead(KxHandle<KxSipHeader>&& header) {
        KxHandle<KxSipHeader>& present = use(header.get()->getHeaderID());
        if (!present.isNil()) {
            chain(present, std::move(header), false);
        } else {
            begin(present, std::move(header));
        }
    }
    /** A deep copy of the values of a kind, chained in their order; nil when there are none. */
    KxHandle<KxSipHeader> copyOf(HeaderID id) const;

    /** Puts the value into an empty slot without giving its kind a place in the order, so it is not written. */
    void addUnlisted(KxHandle<KxSipHeader> header);
    /** Takes out the first value of a kind, without those after it; false when there is none. */
    bool removeFirst(HeaderID id);
    /** Takes out the first unknown header of that name, letter case ignored; false when there is none. */
    bool removeUnknown(std::string_view name);
    /** The first unknown header of exactly that name, or nil. */
    KxHandle<KxSipHeader> findUnknown(std::string_view name) const;

    /** The kind whose first value is written under the name, letter case ignored; the unknown kind when there is none. */
    HeaderID find(std::string_view token) const;

    /** The kinds in order: for (HeaderID id = firstKind(); id != kEnd; id = nextKind(id)). */
    static constexpr HeaderID kEnd = KxHeaderIDs::kCount;
    HeaderID firstKind() const { return m_order[kEnd].next; }
    HeaderID nextKind(HeaderID id) const { return m_order[id].next; }

private:
    /** Chains longer than this have their end remembered, and names beyond it are looked up in an index. */
    static constexpr int kWalk = 8;
    /** What is remembered of long chains, so that each need not be walked again and again. */
    struct Long {
        std::array<KxSipHeader*, KxHeaderIDs::kCount> last{}; ///< Far on in the chain; null where not known.
        std::unique_ptr<KxSipNameIndex> names;                ///< Of the unknown headers.
        std::uint32_t changes = 0;                            ///< KxSipHeader::sChanges() when it was made.
    };
    /** An unknown header and the one before it; null where there is none. */
    struct Place {
        KxSipHeader* before = nullptr;
        KxSipHeader* header = nullptr;
    };
    struct Link {
        std::uint8_t previous;
        std::uint8_t next;
    };

    /** How many slots a message has at once; few messages need the rest. */
    static constexpr std::size_t kNear = 20;
    using Far = std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount + 1 - kNear>;

    const KxHandle<KxSipHeader>& slot(std::size_t place) const {
        return place < kNear ? m_near[place] : (*m_far)[place - kNear];
    }
    KxHandle<KxSipHeader>& slot(std::size_t place) {
        return const_cast<KxHandle<KxSipHeader>&>(std::as_const(*this).slot(place));
    }
    /** The slot of a kind, which gets one where it has none. */
    KxHandle<KxSipHeader>& use(HeaderID id) {
        if (m_place[id] != 0 || m_used >= kNear) {
            return useAgain(id);
        }
        m_place[id] = m_used;
        return m_near[m_used++];
    }
    KxHandle<KxSipHeader>& useAgain(HeaderID id);
    void enlist(HeaderID id) {
        const std::uint8_t last = m_order[kEnd].previous;
        m_order[id] = {last, kEnd};
        m_order[last].next = static_cast<std::uint8_t>(id);
        m_order[kEnd].previous = static_cast<std::uint8_t>(id);
    }
    void begin(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header) {
        slot = std::move(header);
        enlist(slot.get()->getHeaderID());
    }
    void chainFree(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first);
    void chain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first);
    static void release(KxHandle<KxSipHeader>& first);
    void delist(HeaderID id);
    void cut(HeaderID id, KxSipHeader* before);
    KxSipHeader* lastOf(HeaderID id);
    KxSipNameIndex* names() const;
    Place findUnknown(std::string_view name, bool exact) const;
    template <class Change>
    void changeNames(Change change);

    std::array<std::uint8_t, KxHeaderIDs::kCount>
        m_place{};           // of the slot of each kind; 0, which is always nil, for none
    std::uint8_t m_used = 1; // slots, the nil one included
    union {
        std::array<KxHandle<KxSipHeader>, kNear> m_near; // a union, so that unused ones need not be destroyed
    };
    std::unique_ptr<Far> m_far;
    mutable std::unique_ptr<Long> m_long;                // made for the first long chain
    std::array<Link, KxHeaderIDs::kCount + 1> m_order{}; // a ring through kEnd
};
