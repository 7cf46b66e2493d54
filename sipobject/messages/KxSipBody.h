#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

class KxOutputStream;
class KxSipHeaderSlots;

/** The body of a message: a copy of its bytes, followed by a NUL; or none. */
class KxSipBody {
public:
    /** No body. */
    KxSipBody() = default;
    /** Copies the bytes. Throws KxSipParseError "failed to allocate a SIP message body of size ". */
    KxSipBody(const void* bytes, std::size_t length);

    /** Sets Content-Length, then the bytes and Content-Type, as KxSipMessage::setBody does. */
    void set(KxSipHeaderSlots& headers, const void* bytes, const char* contentType, std::uint32_t length);
    /** Removes the bytes and Content-Type, and sets a Content-Length of 0. */
    void clear(KxSipHeaderSlots& headers);
    KxSipBody copy() const { return m_bytes == nullptr ? KxSipBody() : KxSipBody(m_bytes.get(), m_length); }
    /** Null without a body. */
    const char* bytes() const { return m_bytes.get(); }
    std::size_t length() const { return m_length; }
    /** Writes the first bytes, at most `length` of them. */
    void serializeBody(KxOutputStream& out, std::size_t length) const;

private:
    struct Free {
        void operator()(char* bytes) const noexcept;
    };

    std::unique_ptr<char, Free> m_bytes;
    std::size_t m_length = 0;
};
