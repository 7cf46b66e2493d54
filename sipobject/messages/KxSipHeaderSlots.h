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

    /** Nil when there is none. Stays where it is as long as the message. */
    const KxHandle<KxSipHeader>& first(HeaderID id) const { return slot(m_place[id]); }

    /** Puts the value in: first, with what was there before behind it and its own chain dropped, or last, with the
        chain it carries. False, and nothing changes, when this very object hangs there already. */
    bool add(KxHandle<KxSipHeader>&& header, bool first) {
        const HeaderID id = header.get()->getHeaderID();
        KxHandle<KxSipHeader>& present = use(id);
        if (!present.isNil()) {
            return chain(present, std::move(header), first);
        }
        present = std::move(header);
        enlist(id);
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
    bool chain(KxHandle<KxSipHeader>& slot, KxHandle<KxSipHeader>&& header, bool first);
    void delist(HeaderID id);
    KxSipHeader* lastOf(HeaderID id);
    void forgetLast(HeaderID id);

    std::array<std::uint8_t, KxHeaderIDs::kCount>
        m_place{};           // of the slot of each kind; 0, which is always nil, for none
    std::uint8_t m_used = 1; // slots, the nil one included
    union {
        std::array<KxHandle<KxSipHeader>, kNear> m_near; // of which those that were never used need no look in the end
    };
    std::unique_ptr<Far> m_far;
    std::unique_ptr<std::array<KxHandle<KxSipHeader>, KxHeaderIDs::kCount>> m_last; // made for the first long chain
    std::array<Link, KxHeaderIDs::kCount + 1> m_order{};                            // a ring through kEnd
};
