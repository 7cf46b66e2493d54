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
    std::bad_alloc; the index must then be dropped. */
class KxSipNameIndex {
public:
    struct Node;

    KxSipNameIndex() = default;
    ~KxSipNameIndex();
    KxSipNameIndex(const KxSipNameIndex&) = delete;
    KxSipNameIndex& operator=(const KxSipNameIndex&) = delete;

    void addFirst(KxSipHeader& header) { add(header, true); }
    /** Appends the header and its chain. */
    void addLast(KxSipHeader* header);
    /** Makes room for so many headers in all. */
    void reserve(std::size_t count) { m_noCase.reserve(count); }

    /** Prepares for findExact. The first call takes time for all headers. */
    void prepareExact();
    /** The first header with exactly that name, or null. */
    const Node* findExact(std::string_view name) const { return sFirst(m_exact, name); }
    /** The first header with that name, ignoring letter case, or null. */
    const Node* findNoCase(std::string_view name) const { return sFirst(m_noCase, name); }
    static KxSipHeader* sHeader(const Node& node);
    /** The header before it in the chain; null for the first. */
    static KxSipHeader* sBefore(const Node& node);
    /** Removes a header from the index. It must be the first with its name, ignoring letter case. */
    void remove(const KxSipHeader& header);

private:
    enum Order { kChain, kNoCase, kExact, kOrders };
    /** The two ends of a list of nodes in one order, or the two neighbours of a node. */
    struct Pair {
        Node* first = nullptr;
        Node* last = nullptr;
    };
    struct HashNoCase {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return KxNameHash::noCase(name); }
    };
    struct EqualNoCase {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const { return KxAscii::equalsNoCase(a, b); }
    };
    struct HashExact {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return KxNameHash::exact(name); }
    };

    void add(KxSipHeader& header, bool first);
    static void link(Pair& ends, Node& node, Order order, bool first);
    static void unlink(Pair& ends, Node& node, Order order);
    template <class Groups>
    static const Node* sFirst(const Groups& groups, std::string_view name) {
        const auto found = groups.find(name);
        return found == groups.end() ? nullptr : found->second.first;
    }
    template <class Groups>
    static Node* removeFirst(Groups& groups, std::string_view name, Order order);

    Pair m_chain;
    bool m_hasExact = false; ///< Whether m_exact is filled.
    std::unordered_map<KxString, Pair, HashNoCase, EqualNoCase> m_noCase;
    std::unordered_map<KxString, Pair, HashExact, std::equal_to<>> m_exact;
};
