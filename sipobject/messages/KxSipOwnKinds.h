#pragma once

#include "core/AccountAllocator.h"
#include "sipobject/headers/KxSipHeader.h"

#include <cstdint>
#include <forward_list>

/** The headers of a message whose kinds are a host's own (KxSipHeader::sNewHeaderID), in the order in which these kinds
    were first added. One pointer, which is null as long as there are none. The time to find a kind grows with the
    number of own kinds in the message. */
class KxSipOwnKinds {
public:
    struct Kind {
        HeaderID id;
        std::uint8_t after;             ///< The last kind of the library before it in the order; kCount for none.
        KxHandle<KxSipHeader> first{};  ///< The first value; nil if all were removed. Does not move.
        KxSipHeader* nearEnd = nullptr; ///< A value near the end of the chain, or null.
    };

    auto begin() { return m_kinds.begin(); }
    auto end() { return m_kinds.end(); }
    auto begin() const { return m_kinds.begin(); }
    auto end() const { return m_kinds.end(); }

    /** Null if no header of the kind was ever added. */
    const Kind* find(HeaderID id) const {
        for (const Kind& kind : m_kinds) {
            if (kind.id == id) {
                return &kind;
            }
        }
        return nullptr;
    }
    Kind* find(HeaderID id) { return const_cast<Kind*>(static_cast<const KxSipOwnKinds*>(this)->find(id)); }
    /** The kind; one without values becomes the last one, after the kind `after` of the library. */
    Kind& findOrAppend(HeaderID id, std::uint8_t after);

    /** Stores the same kinds without values of others. Must be empty. `copyOf` makes a copy of a chain. */
    template <class Copy>
    void copyFrom(const KxSipOwnKinds& other, Copy copyOf) {
        auto last = m_kinds.before_begin();
        for (const Kind& kind : other) {
            if (!kind.first.isNil()) {
                last = m_kinds.insert_after(last, {kind.id, kind.after, copyOf(kind.id)});
            }
        }
    }
    /** A kind of the library left the order, where it was after `previous`. */
    void forgetKind(HeaderID gone, std::uint8_t previous) {
        for (Kind& kind : m_kinds) {
            kind.after = kind.after == gone ? previous : kind.after;
        }
    }

private:
    KX_SIP_API static Oskan::MemAccount s_account;

    std::forward_list<Kind, Oskan::AccountAllocator<Kind, s_account>> m_kinds;
};
