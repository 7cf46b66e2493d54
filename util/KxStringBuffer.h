#pragma once

#include "core/Assertion.h"
#include "core/MemAccount.h"
#include "util/KxBytes.h"
#include "util/KxCharSet.h"
#include "util/KxHandle.h"
#include "util/KxWords.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

class KxInputStream;

/** The character buffer of strings: counter, length and text in one block. The text is always NUL-terminated. If the
    text becomes too long for the block, it moves to the heap; the object keeps its address. Not locked: while a thread
    changes it, no other thread may use it. Text of more than 2 GiB throws KxException. */
class KX_UTIL_API KxStringBuffer final : public KxObject {
public:
    /** A new buffer with `length` bytes of `text` (zeros if it is null) and with room for `capacity` characters. */
    static KxHandle<KxStringBuffer> sCreate(const char* text, std::size_t length, std::size_t capacity = 0);

    KxStringBuffer(const KxStringBuffer&) = delete;
    KxStringBuffer& operator=(const KxStringBuffer&) = delete;
    ~KxStringBuffer() override {
        if ((m_capacity & kOutside) != 0) {
            freeOutside();
        }
    }

    std::uint32_t Release(bool destroy) override {
        const auto owners = static_cast<std::int32_t>(count()); // negative for a constant
        if (owners == 1 && destroy) {
            destroySelf();
            return 0;
        }
        return owners >= 1 ? releaseShared(destroy) : static_cast<std::uint32_t>(owners);
    }
    KxStringBuffer* clone() const override;
    int compareWith(const KxObject& other) const override;
    std::uint32_t hashCode() const override;
    void display(KxOutputStream& out, bool verbose) const override;

    const char* c_str() const { return (m_capacity & kOutside) != 0 ? m_tail.outside.text : inlineText(); }
    std::size_t length() const { return m_length; }
    bool empty() const { return m_length == 0; }
    /** The number of characters that fit without growing. */
    std::size_t capacity() const { return m_capacity & ~kOutside; }
    std::string_view view() const { return {c_str(), m_length}; }
    /** Copies the text, whose length is given and at most KxBytes::kMediumCopy, and returns the end of the copy. After
        it, up to KxBytes::kSlack more bytes may be overwritten. */
    [[gnu::always_inline]] char* copyTo(char* to, std::size_t length) const {
        if (length <= kInObject && (m_capacity & kOutside) == 0) { // copy all that is in the object
            static_assert(kInObject == KxBytes::kSlack);
            __builtin_memcpy(to, inlineText(), 8);
            __builtin_memcpy(to + 8, inlineText() + 8, kInObject - 8);
            return to + length;
        }
        return KxBytes::copyMedium(to, c_str(), length);
    }

    void assign(const char* text);
    void assign(const char* text, std::size_t length);
    void append(const char* text, std::size_t length);
    void append(const KxStringBuffer& other) { append(other.c_str(), other.length()); }

    /** Compares byte by byte; returns a negative number, zero or a positive number. Null reads as empty. */
    int compareWith(const char* text) const;
    /** As above, but ignores the case of ASCII letters. */
    int compareNoCase(const char* text) const;
    /** The first position of `text` from `start` on; -1 when absent. */
    std::ptrdiff_t indexOf(const char* text, std::size_t start = 0) const;
    /** A new buffer of at most `length` characters from `start`; empty when there are none. */
    KxHandle<KxStringBuffer> substr(std::size_t start, std::size_t length) const;
    /** Drops leading and trailing white space. */
    void trim();
    void toUpper();
    void toLower();

    /** Returns room for `capacity` characters to write to; the length does not change until releaseBuffer. */
    char* lockBuffer(std::size_t capacity);
    /** Sets the length (at most the capacity) and the terminating NUL. */
    void releaseBuffer(std::size_t finalLength);

    /** Replaces the text with up to `count` bytes of the stream; returns how many there were. */
    std::size_t read(KxInputStream& in, std::size_t count);
    /** Replaces the text: skips leading white space, then takes the characters up to the first delimiter, which stays
        unread, or to the end. Returns the length. */
    std::size_t parse(KxInputStream& in, const KxCharSet& delimiters);
    std::size_t parse(KxInputStream& in, const char* delimiters);

    void operator delete(void* block);

private:
    friend class KxConstStringStorage;
    friend class KxString;
    friend KX_UTIL_API KxStringBuffer* KxWords::findOrCopy(std::string_view text);

    static constexpr std::uint32_t kOutside = 0x80000000U;
    static constexpr std::size_t kLongest = kOutside - 64;

    /** A constant made from a literal, which it refers to if it has no room for the text. */
    constexpr KxStringBuffer(const char* literal, std::size_t length, Immortal immortal)
        : KxObject(immortal),
          m_length(static_cast<std::uint32_t>(length)),
          m_capacity(static_cast<std::uint32_t>(length) | (length < kInObject ? 0 : kOutside)),
          m_tail(literal, length) {}
    KxStringBuffer(std::uint32_t capacity, std::size_t length)
        : KxObject(Held::Tag), m_length(static_cast<std::uint32_t>(length)), m_capacity(capacity) {}

    static constexpr std::size_t blockFor(std::size_t capacity);
    static KxStringBuffer* create(void* block, std::size_t bytes, std::size_t length);
    static KxStringBuffer* create(std::size_t length, std::size_t capacity);
    /** A copy of the text, with one reference. */
    static KxStringBuffer* createHeld(std::string_view text);
    template <std::size_t kMost>
    static KxStringBuffer* createAtHand(std::string_view text);
    [[gnu::noinline]] static KxStringBuffer* createHeldLong(std::string_view text);
    [[gnu::noinline]] static KxStringBuffer* createHeldSlowly(std::string_view text);
    void destroySelf();
    [[gnu::noinline]] void destroySlowly();
    /** Returns the length; throws if it is too long for a string. */
    static std::size_t checked(std::size_t length);
    [[noreturn]] static void throwTooLong();

    char* inlineText() { return reinterpret_cast<char*>(this) + kTextOffset; }
    const char* inlineText() const { return reinterpret_cast<const char*>(this) + kTextOffset; }
    /** The text for writing. Constants are shared by the whole process; KxString hands out copies of them. */
    char* text() {
        OSKAN_ASSERT(!isImmortal());
        return const_cast<char*>(c_str());
    }
    void setLength(std::size_t length) {
        m_length = static_cast<std::uint32_t>(length);
        text()[length] = '\0';
    }
    void grow(std::size_t capacity);
    void freeOutside();

    struct __attribute__((packed, aligned(4))) Outside {
        std::uint32_t unused;
        const char* text;
    };
    static constexpr std::size_t kInObject = sizeof(Outside); // bytes of the text that are part of each object
    union Tail {
        Tail() {}
        constexpr Tail(const char* literal, std::size_t length) : first{} {
            if (length < kInObject) {
                std::copy_n(literal, length, first);
            } else {
                outside = {0, literal};
            }
        }
        char first[kInObject]; // the text begins here and may extend to the end of the block
        Outside outside;
    };

    static constexpr std::size_t kTextOffset = 20; // of m_tail
    std::uint32_t m_length;
    std::uint32_t m_capacity; // of the text without its NUL; if kOutside is set, the text is outside the block
    Tail m_tail;
};
