#pragma once

#include "sipobject/messages/KxSipHeaderSlots.h"

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

class KxSipMessage;

/** The headers of one name in a message, in their order, as KxSipMessage::valuesNamed returns them. H is KxSipHeader,
    const for a const message. The first header is looked up when the range is made, each further one when an iterator
    moves. The range and its iterators are valid until headers of the kind are added or removed (for a name without a
    class: any headers without a class); they own nothing. */
template <class H>
class KxSipNamedValues {
    using Message = std::conditional_t<std::is_const_v<H>, const KxSipMessage, KxSipMessage>;

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
        Iterator(Message& message, KxSipHeaderSlots::Named at) : m_message(&message), m_at(at) {}
        H& operator*() const { return *m_at.first; }
        H* operator->() const { return m_at.first; }
        Iterator& operator++() {
            m_at.first = m_message->nextNamed(*m_at.first);
            if (m_at.first == nullptr) {
                m_at.first = std::exchange(m_at.then, nullptr);
            }
            return *this;
        }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return m_at.first == other.m_at.first; }

    private:
        Message* m_message = nullptr;
        KxSipHeaderSlots::Named m_at;
    };

    KxSipNamedValues(Message& message, KxSipHeaderSlots::Named first) : m_begin(message, first) {}
    Iterator begin() const { return m_begin; }
    Iterator end() const { return {}; }
    bool empty() const { return m_begin == Iterator(); }

private:
    Iterator m_begin;
};
