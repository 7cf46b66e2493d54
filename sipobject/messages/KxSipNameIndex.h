#pragma once

#include "util/KxAscii.h"
#include "util/KxNameHash.h"
#include "util/KxString.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_map>

class KxSipHeader;

/** Finds the headers of a long chain by name, and the header before each. For messages with many headers that have no
    class: finding, adding and removing a header take constant time. The index stores only the addresses of the
    headers: code that changes the chain must update the index or drop it. The functions that add may throw
    std::bad_alloc; the index must then be dropped. A compact name that the grammar knows is its full name. */
class KxSipNameIndex {
    struct Node;
    /** The two ends of a list of nodes in one order, or the two neighbours of a node. */
    struct Pair {
        Node* first = nullptr;
        Node* last = nullptr;
    };
    template <auto kHash>
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return kHash(name); }
    };
    struct EqualNoCase {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const { return KxAscii::equalsNoCase(a, b); }
    };
    /** The nodes of each name, ignoring letter case. */
    using NoCase = std::unordered_map<KxString, Pair, Hash<KxNameHash::noCase>, EqualNoCase>;

public:
    /** A header and the one before it in the chain; each is null if there is none. Valid until the index changes. */
    struct Found {
        KxSipHeader* before = nullptr;
        KxSipHeader* header = nullptr;
        NoCase::iterator group{}; ///< Of a header that was found ignoring letter case.
    };

    KxSipNameIndex() = default;
    ~KxSipNameIndex();
    KxSipNameIndex(const KxSipNameIndex&) = delete;
    KxSipNameIndex& operator=(const KxSipNameIndex&) = delete;

    void addFirst(KxSipHeader& header) { add(header, true); }
    /** Appends the header and its chain. */
    void addLast(KxSipHeader* header);
    /** Makes room for so many headers in all. */
    void reserve(std::size_t count) { m_noCase.reserve(count); }

    /** Prepares for exact look-ups. The first call takes time for all headers. */
    void prepareExact();
    /** The first header with exactly that full name (after prepareExact), or with that name ignoring letter case. */
    Found find(std::string_view name, bool exact);
    /** The next header with the name of this one, ignoring letter case; null if there is none, or if this one is not in
        the index. Constant time for one after the other. */
    KxSipHeader* next(const KxSipHeader& header);
    /** Removes what `find` found last, ignoring letter case, from the index. */
    void remove(const Found& found);

private:
    enum Order { kChain, kNoCase, kExact, kOrders };

    void add(KxSipHeader& header, bool first);
    static void link(Pair& ends, Node& node, Order order, bool first);
    static void unlink(Pair& ends, Node& node, Order order);
    template <class Groups>
    static Node* removeFirst(Groups& groups, typename Groups::iterator group, Order order);

    Pair m_chain;
    const Node* m_lastNext = nullptr; ///< What `next` found last, or null.
    bool m_hasExact = false;          ///< Whether m_exact is filled.
    NoCase m_noCase;
    std::unordered_map<KxString, Pair, Hash<KxNameHash::exact>, std::equal_to<>> m_exact;
};
