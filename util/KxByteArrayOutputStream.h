#pragma once

#include "util/KxByteArray.h"
#include "util/KxOutputStream.h"

/** A stream that writes to memory. */
class KX_UTIL_API KxByteArrayOutputStream final : public KxOutputStream {
public:
    /** Begins with room for `initialCapacity` bytes and grows as needed. */
    explicit KxByteArrayOutputStream(std::size_t initialCapacity = 512);

    /** The bytes written so far, without a copy. Later writes go to another array and leave this one unchanged. */
    KxHandle<KxByteArray> toByteArray();

    /** The bytes written so far, in place; valid until the next write. */
    std::string_view view() const { return {m_bytes->data(), size()}; }
    std::size_t size() const { return static_cast<std::size_t>(cursor() - m_bytes->data()); }
    /** Drops the bytes written and keeps the room. */
    void clear();

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override;

private:
    KxHandle<KxByteArray> m_bytes;
};
