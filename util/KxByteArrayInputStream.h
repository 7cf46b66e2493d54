#pragma once

#include "util/KxByteArray.h"
#include "util/KxInputStream.h"

/** A whole stream over bytes in memory, from which a host reads messages. */
class KX_UTIL_API KxByteArrayInputStream final : public KxInputStream {
public:
    /** Reads the whole array and keeps it alive; nil reads as empty. */
    explicit KxByteArrayInputStream(KxHandle<KxByteArray> bytes);
    /** Reads `length` bytes (fewer if the array ends before) of the array from `offset`. */
    KxByteArrayInputStream(KxHandle<KxByteArray> bytes, std::size_t offset, std::size_t length);
    /** Reads bytes that the stream does not own. They must outlive the stream and must not change. */
    explicit KxByteArrayInputStream(std::string_view bytes)
        : KxInputStream(bytes.data(), bytes.data() + bytes.size(), bytes.data() + bytes.size()) {}

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override;

private:
    KxHandle<KxByteArray> m_bytes;
};
