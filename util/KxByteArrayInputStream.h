#pragma once

#include "util/KxByteArray.h"
#include "util/KxInputStream.h"

/** Bytes in memory as a whole stream: what a host reads messages from. */
class KX_UTIL_API KxByteArrayInputStream final : public KxInputStream {
public:
    /** The whole array, which is kept alive; nil reads as empty. */
    explicit KxByteArrayInputStream(KxHandle<KxByteArray> bytes);
    /** `length` bytes (or fewer, if there are no more) of the array from `offset`. */
    KxByteArrayInputStream(KxHandle<KxByteArray> bytes, std::size_t offset, std::size_t length);
    /** Somebody else's bytes, which must outlive the stream and stay as they are. */
    explicit KxByteArrayInputStream(std::string_view bytes)
        : KxInputStream(bytes.data(), bytes.data() + bytes.size(), bytes.data() + bytes.size()) {}

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override;

private:
    KxHandle<KxByteArray> m_bytes;
};
