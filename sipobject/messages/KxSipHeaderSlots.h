#pragma once

#include "sipobject/headers/KxSipHeader.h"

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

/** The headers of a message: a slot for each kind, holding the first value with the others chained behind it, and the
    order in which the kinds first came. Knows nothing of start lines, bodies or locks. */
class KxSipHeaderSlots {
public:
    KxSipHeaderSlots();
    ~KxSipHeaderSlots();
    KxSipHeaderSlots(const KxSipHeaderSlots&) = delete;
    KxSipHeaderSlots& operator=(const KxSipHeaderSlots&) = delete;

    /** Fills the empty slots with a deep copy. */
    void copyFrom(const KxSipHeaderSlots& other);

    const KxHandle<KxSipHeader>& first(HeaderID id) const { return m_slots[id]; }

    /** Puts the value in: first, with what was there before behind it and its own chain dropped, or last, with the
        chain it carries. False, and nothing changes, when this very object hangs there already. */
    bool add(KxHandle<KxSipHeader>&& header, bool first) {
        KxHandle<KxSipHeader>& slot = m_slots[header->getHeaderID()];
        if (!slot.isNil()) {
            return chain(slot, std::move(header), first);
        }
        enlist(header->getHeaderID());
        use(header->getHeaderID()) = std::move(header);
        return true;
    }
    /** A deep copy of the values of a kind, chained in their order; nil when there are none. */
    KxHandle<KxSipHeader> copyOf(HeaderID id) const;

    /** Puts the value into an empty slot without giving its kind a place in the order, so it is not written. */
    void addUnlisted(KxHandle<KxSipHeader> header);
    /** Takes out the first value of a kind; false when there is none. */
    bool removeFirst(HeaderID id);
    /** Takes out the first unknown header of that name, letter case ignored; false when there is none. */
    bool removeUnknown(std::string_view name);

    /** The kind whose first value is written under the name, letter case ignored; the unknown kind when there is none. */
    HeaderID find(std::string_view token) const;

    /** The kinds in order: for (HeaderID id = firstKind(); id != kEnd; id = nextKind(id)). */
    static constexpr HeaderID kEnd = KxHeaderIDs::kCount;
    HeaderID firstKind() const { return m_order[kEnd].next; }
    HeaderID nextKind(HeaderID id) const { return m_order[id].next; }

private:
    /** Chains longer than this have their end remembered. */
    static constexpr int kWalk = 8;
    struct Link {
        std::uint8_t previous;
        std::uint8_t next;
    };

    KxHandle<KxSipHeader>& use(HeaderID id) {
        m_used |= std::uint64_t{1} << id;
        return m_slots[id];
    }
    void enlist(HeaderID id) {
        const std::uint8_t last = m_order[kEnd].previous;
        m_order[id] = {last, kEnd};
        m_order[last].next = static_cast<std::uint8_t>(id);
        m_order[kEnd].previous = static_cast<std::uint8_t>(id);
    }
    bool chain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first);
    void delist(HeaderID id);
    KxSipHeader* lastOf(HeaderID id);
    void forgetLast(HeaderID id);

    static_assert(KxHeaderIDs::kCount <= 64);
    std::uint64_t m_used = 0; // slots that were ever filled; the others need no look when all is dropped
    union {
        std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount> m_slots;
    };
    std::unique_ptr<std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount>> m_last; // made for the first long chain
    std::array<Link, KxHeaderIDs::kCount + 1> m_order{};                            // a ring through kEnd
};
