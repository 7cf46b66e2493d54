#pragma once

#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/messages/KxSipNameIndex.h"

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

/** The headers of a message: a slot for each kind, which holds the first value with the others chained after it, and
    the order in which the kinds were first added. Independent of start lines and bodies. Does not lock: it is used by
    one thread at a time, even for looking up names, which updates a cache. */
class KxSipHeaderSlots {
public:
    KxSipHeaderSlots();
    ~KxSipHeaderSlots();
    KxSipHeaderSlots(const KxSipHeaderSlots&) = delete;
    KxSipHeaderSlots& operator=(const KxSipHeaderSlots&) = delete;

    /** Stores a deep copy of the other's headers. All slots must be empty. */
    void copyFrom(const KxSipHeaderSlots& other);

    /** The first value of a kind; nil when there is none. The slot does not move as long as the message exists. */
    const KxHandle<KxSipHeader>& first(HeaderID id) const { return slot(m_place[id]); }

    /** Adds the value as the first of its kind (existing values then replace its own chain), or after the last one,
        with its chain if no value of that is part of a message. Returns false and changes nothing if the value is
        already part of a message. */
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
    /** Adds a header that was just read, and is already marked as part of a message, after the last of its kind. */
    void addRead(KxHandle<KxSipHeader>&& header) {
        KxHandle<KxSipHeader>& present = use(header.get()->getHeaderID());
        if (!present.isNil()) {
            chain(present, std::move(header), false);
        } else {
            begin(present, std::move(header));
        }
    }
    /** A deep copy of all values of a kind, chained in their order; nil when there are none. */
    KxHandle<KxSipHeader> copyOf(HeaderID id) const;

    /** Puts the value into an empty slot but does not add its kind to the order, so that it is not written. */
    void addUnlisted(KxHandle<KxSipHeader> header);
    /** Removes the first value of a kind and keeps those after it; returns false if there is none. */
    bool removeFirst(HeaderID id);
    /** Removes the first unknown header of that name, ignoring letter case; returns false if there is none. */
    bool removeUnknown(std::string_view name);
    /** The first unknown header with exactly that name, or nil. */
    KxHandle<KxSipHeader> findUnknown(std::string_view name) const;

    /** The kind whose first value is written under the name, ignoring letter case; kUnknown if there is none. */
    HeaderID find(std::string_view token) const;

    /** The kinds in order: for (HeaderID id = firstKind(); id != kEnd; id = nextKind(id)). */
    static constexpr HeaderID kEnd = KxHeaderIDs::kCount;
    HeaderID firstKind() const { return m_order[kEnd].next; }
    HeaderID nextKind(HeaderID id) const { return m_order[id].next; }

private:
    /** The end of a chain longer than this is cached, and names further along the chain are looked up in an index. */
    static constexpr int kWalk = 8;
    /** Cached positions in long chains, so that a chain is not walked again for each operation. */
    struct Long {
        std::array<KxSipHeader*, KxHeaderIDs::kCount> last{}; ///< A value near the end of the chain, or null.
        std::unique_ptr<KxSipNameIndex> names;                ///< Index of the unknown headers.
        std::uint32_t changes = 0;                            ///< KxSipHeader::sChanges() when the index was made.
    };
    /** An unknown header and the one before it; each is null if there is none. */
    struct Place {
        KxSipHeader* before = nullptr;
        KxSipHeader* header = nullptr;
    };
    struct Link {
        std::uint8_t previous;
        std::uint8_t next;
    };

    /** The number of slots inside the object. Few messages need more. */
    static constexpr std::size_t kNear = 20;
    using Far = std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount + 1 - kNear>;

    const KxHandle<KxSipHeader>& slot(std::size_t place) const {
        return place < kNear ? m_near[place] : (*m_far)[place - kNear];
    }
    KxHandle<KxSipHeader>& slot(std::size_t place) {
        return const_cast<KxHandle<KxSipHeader>&>(std::as_const(*this).slot(place));
    }
    /** The slot of a kind; a kind without one gets one. */
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
    KxSipNameIndex* names(bool exact) const;
    Place findUnknown(std::string_view name, bool exact) const;
    template <class Change>
    void changeNames(Change change);

    std::array<std::uint8_t, KxHeaderIDs::kCount>
        m_place{};           // the slot of each kind; 0, whose slot is always nil, for none
    std::uint8_t m_used = 1; // number of slots, including the nil one
    union {
        std::array<KxHandle<KxSipHeader>, kNear> m_near; // in a union, so that unused slots are not destroyed
    };
    std::unique_ptr<Far> m_far;
    mutable std::unique_ptr<Long> m_long;                // created for the first long chain
    std::array<Link, KxHeaderIDs::kCount + 1> m_order{}; // a ring that includes kEnd
};
