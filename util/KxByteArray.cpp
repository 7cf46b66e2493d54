#include "util/KxByteArray.h"

#include "core/NoSizeMemAllocator.h"
#include "util/KxOutputStream.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

namespace {

constinit Oskan::MemAccount s_account{"KxByteArray"};

} // namespace

void* KxByteArray::operator new(std::size_t size, std::size_t room) {
    return Oskan::NoSizeMemAllocator::allocate(size + room, s_account);
}

void KxByteArray::operator delete(void* block) {
    Oskan::NoSizeMemAllocator::deallocate(block, s_account);
}

void KxByteArray::operator delete(void* block, std::size_t) {
    Oskan::NoSizeMemAllocator::deallocate(block, s_account);
}

KxHandle<KxByteArray> KxByteArray::sReserve(std::size_t capacity) {
    if (capacity > std::numeric_limits<std::size_t>::max() / 2) {
        throw std::bad_alloc();
    }
    KxHandle<KxByteArray> made(new (capacity + 1) KxByteArray(capacity));
    made->setLength(0);
    return made;
}

KxHandle<KxByteArray> KxByteArray::sCreate(std::size_t length, const void* bytes) {
    KxHandle<KxByteArray> made = sReserve(length);
    if (bytes == nullptr) {
        std::memset(made->data(), 0, length);
    } else if (length != 0) {
        std::memcpy(made->data(), bytes, length);
    }
    made->setLength(length);
    return made;
}

KxHandle<KxByteArray> KxByteArray::sCreate(const char* text) {
    return text == nullptr ? sCreate(std::size_t{0}) : sCreate(std::strlen(text), text);
}

KxByteArray* KxByteArray::clone() const {
    KxByteArray* const copy = sCreate(m_length, data()).detach();
    copy->Release(false);
    return copy;
}

void KxByteArray::setLength(std::size_t length) {
    m_length = std::min(length, m_capacity);
    data()[m_length] = '\0';
}

int KxByteArray::compareWith(const KxObject& other) const {
    const auto* const bytes = dynamic_cast<const KxByteArray*>(&other);
    return bytes == nullptr ? KxObject::compareWith(other) : view().compare(bytes->view());
}

std::uint32_t KxByteArray::hashCode() const {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(view()));
}

void KxByteArray::display(KxOutputStream& out, bool) const {
    out << view();
}
