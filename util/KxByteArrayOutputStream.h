#pragma once

#include "util/KxByteArray.h"
#include "util/KxOutputStream.h"

/** Bytes written to memory. */
class KX_UTIL_API KxByteArrayOutputStream final : public KxOutputStream {
public:
    /** With room for `initialCapacity` bytes; grows as needed. */
    explicit KxByteArrayOutputStream(std::size_t initialCapacity = 512);

    /** What was written so far, without copying it. What is written later goes to another array and leaves this one
        as it is. */
    KxHandle<KxByteArray> toByteArray();

    /** What was written so far, where it lies; holds until the next write. */
    std::string_view view() const { return {m_bytes->data(), size()}; }
    std::size_t size() const { return static_cast<std::size_t>(cursor() - m_bytes->data()); }
    /** Forgets what was written and keeps the room. */
    void clear();

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override;

private:
    KxHandle<KxByteArray> m_bytes;
};
