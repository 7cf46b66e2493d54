#pragma once

#include "util/KxInputStream.h"

/** A whole stream over bytes that it does not own. They must outlive the stream and must not change. */
class KX_UTIL_API KxViewInputStream final : public KxInputStream {
public:
    explicit KxViewInputStream(std::string_view bytes) : KxViewInputStream(bytes, bytes.data() + bytes.size()) {}
    /** The bytes after those of the stream, up to `readable`, may be loaded too. */
    KxViewInputStream(std::string_view bytes, const char* readable)
        : KxInputStream(bytes.data(), bytes.data() + bytes.size(), readable) {}

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override;
};
