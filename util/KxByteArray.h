#pragma once

#include "core/MemAccount.h"
#include "util/KxHandle.h"

#include <cstddef>
#include <string_view>

/** A reference-counted buffer of bytes, in one block of memory. A NUL follows the last byte. */
class KX_UTIL_API KxByteArray final : public KxObject {
public:
    /** A new array of `length` bytes, copied from `bytes` or, where that is null, zero. */
    static KxHandle<KxByteArray> sCreate(std::size_t length, const void* bytes = nullptr);
    /** A new array of a text's characters without its NUL. */
    static KxHandle<KxByteArray> sCreate(const char* text);
    /** An empty array with room for `capacity` bytes, to be filled through data() and setLength(). */
    static KxHandle<KxByteArray> sReserve(std::size_t capacity);

    KxByteArray(const KxByteArray&) = delete;
    KxByteArray& operator=(const KxByteArray&) = delete;

    [[nodiscard]] KxByteArray* clone() const override;
    /** Compares byte by byte; a prefix sorts first. */
    int compareWith(const KxObject& other) const override;
    std::uint32_t hashCode() const override;
    /** Writes the bytes as they are. */
    void display(KxOutputStream& out, bool verbose) const override;

    std::size_t length() const { return m_length; }
    std::size_t capacity() const { return m_capacity; }
    char* data() { return reinterpret_cast<char*>(this + 1); }
    const char* data() const { return reinterpret_cast<const char*>(this + 1); }
    std::string_view view() const { return {data(), m_length}; }
    unsigned char& operator[](std::size_t index) { return reinterpret_cast<unsigned char*>(data())[index]; }
    unsigned char operator[](std::size_t index) const { return static_cast<unsigned char>(data()[index]); }
    /** Sets the length, at most to the capacity. Bytes beyond the old length are those written through data(). */
    void setLength(std::size_t length);

    void* operator new(std::size_t size, std::size_t room);
    void operator delete(void* block);
    void operator delete(void* block, std::size_t room);

private:
    explicit KxByteArray(std::size_t capacity) : m_length(0), m_capacity(capacity) {}

    std::size_t m_length;
    std::size_t m_capacity;
};
