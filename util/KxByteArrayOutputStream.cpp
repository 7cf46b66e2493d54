#include "util/KxByteArrayOutputStream.h"

#include <algorithm>
#include <cstring>

KxByteArrayOutputStream::KxByteArrayOutputStream(std::size_t initialCapacity)
    : m_bytes(KxByteArray::sReserve(initialCapacity)) {
    setWindow(m_bytes->data(), m_bytes->data() + m_bytes->capacity());
}

KxHandle<KxByteArray> KxByteArrayOutputStream::toByteArray() {
    m_bytes->setLength(size());
    setWindow(cursor(), cursor()); // the next write finds no room and leaves this array unchanged
    return m_bytes;
}

void KxByteArrayOutputStream::clear() {
    if (!m_bytes->isUnshared()) {
        m_bytes = KxByteArray::sReserve(m_bytes->capacity());
    }
    setWindow(m_bytes->data(), m_bytes->data() + m_bytes->capacity());
}

void KxByteArrayOutputStream::writeBeyondWindow(const char* bytes, std::size_t count) {
    const std::size_t written = size();
    const std::size_t needed = written + count;
    const std::size_t roomy = needed <= m_bytes->capacity() ? m_bytes->capacity() : std::max(needed, written * 2);
    const KxHandle<KxByteArray> fresh = KxByteArray::sReserve(roomy);
    std::memcpy(fresh->data(), m_bytes->data(), written);
    std::memcpy(fresh->data() + written, bytes, count);
    m_bytes = fresh;
    setWindow(m_bytes->data() + needed, m_bytes->data() + m_bytes->capacity());
}
