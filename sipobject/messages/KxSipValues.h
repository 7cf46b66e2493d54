#pragma once

#include "sipobject/headers/KxSipHeader.h"

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <typeinfo>

/** The values of one header class in a message, in their order, as KxSipMessage::values returns them. H is the class,
    const for a const message. Values of other classes (an application's own with the same identifier) are skipped. The
    range and its iterators are valid until headers of the kind are added or removed; they own nothing. */
template <class H>
class KxSipValues {
    using Header = std::conditional_t<std::is_const_v<H>, const KxSipHeader, KxSipHeader>;

public:
    /** A forward iterator. */
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = H;
        using difference_type = std::ptrdiff_t;
        using pointer = H*;
        using reference = H&;

        Iterator() = default;
        explicit Iterator(Header* at) : m_at(at) { skipOthers(); }
        H& operator*() const { return static_cast<H&>(*m_at); }
        H* operator->() const { return static_cast<H*>(m_at); }
        Iterator& operator++() {
            m_at = m_at->getNext().get();
            skipOthers();
            return *this;
        }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator&) const = default;

    private:
        void skipOthers() {
            while (m_at != nullptr && typeid(*m_at) != typeid(H)) {
                m_at = m_at->getNext().get();
            }
        }

        Header* m_at = nullptr;
    };

    explicit KxSipValues(Header* first) : m_begin(first) {}
    Iterator begin() const { return m_begin; }
    Iterator end() const { return {}; }
    bool empty() const { return m_begin == Iterator(); }

private:
    Iterator m_begin;
};
