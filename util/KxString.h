#pragma once

#include "util/KxStringBuffer.h"
#include "util/KxWords.h"

#include <iosfwd>
#include <string_view>

class KxConstString;

/** The string value of the library: a handle to a KxStringBuffer that is no longer changed. Copies share the buffer. A
    nil string reads as empty everywhere. Strings compare byte by byte. */
class KX_UTIL_API KxString {
public:
    constexpr KxString() = default;
    /** Holds the constant, which is not counted. */
    KxString(const KxConstString& constant);
    /** Copies the text; null gives nil. */
    KxString(const char* text);
    /** Copies the text; words that recur in signalling ("INVITE", "branch", "udp") share one constant. */
    explicit KxString(std::string_view text) : m_buffer(KxWords::findOrCopy(text), KxUncounted{}) {}
    KxString(const char* text, std::size_t length) : KxString(std::string_view(text, length)) {}
    /** Shares the buffer. */
    explicit KxString(KxHandle<KxStringBuffer> buffer) : m_buffer(std::move(buffer)) {}

    [[nodiscard]] bool isNil() const { return m_buffer.isNil(); }
    [[nodiscard]] bool empty() const { return length() == 0; }
    std::size_t length() const { return isNil() ? 0 : m_buffer.get()->length(); }
    const char* c_str() const { return isNil() ? "" : m_buffer.get()->c_str(); }
    /** The text for a copy. The length is kept here, so that it is read once although the copy stores bytes. */
    class Source {
    public:
        explicit Source(const KxString& text) : m_buffer(text.m_buffer.get()), m_length(text.length()) {}
        std::size_t length() const { return m_length; }
        /** As KxStringBuffer::copyTo. */
        [[gnu::always_inline]] char* copyTo(char* to) const {
            return m_buffer == nullptr ? to : m_buffer->copyTo(to, m_length);
        }

    private:
        const KxStringBuffer* m_buffer;
        std::size_t m_length;
    };
    std::string_view view() const { return isNil() ? std::string_view("", 0) : m_buffer.get()->view(); }
    operator std::string_view() const { return view(); }
    char operator[](std::size_t index) const { return view()[index]; }

    /** The buffer, shared with the string; nil for a nil string. If the text is a constant of the library, it is copied
        first, and the string then holds the copy. */
    KxHandle<KxStringBuffer> getBuffer();
    /** As above, but the copy of a constant belongs to the caller only. */
    KxHandle<KxStringBuffer> getBuffer() const { return KxString(*this).getBuffer(); }
    /** Whether the two strings have the same buffer or constant. */
    [[nodiscard]] bool sharesWith(const KxString& other) const { return m_buffer == other.m_buffer; }

    [[nodiscard]] int compareWith(std::string_view other) const { return view().compare(other); }
    [[nodiscard]] int compareNoCase(std::string_view other) const { return KxAscii::compareNoCase(view(), other); }
    [[nodiscard]] bool equalsNoCase(std::string_view other) const { return KxAscii::equalsNoCase(view(), other); }
    /** The first position of `text` from `start` on; -1 when absent. */
    [[nodiscard]] std::ptrdiff_t indexOf(std::string_view text, std::size_t start = 0) const;
    [[nodiscard]] KxString substr(std::size_t start, std::size_t length) const;
    [[nodiscard]] KxString upper() const;
    [[nodiscard]] KxString lower() const;

    /** Appends the text; a shared buffer is copied first. */
    KxString& append(std::string_view text);
    KxString& operator+=(std::string_view text) { return append(text); }

    friend bool operator==(const KxString& a, const KxString& b) {
        return a.m_buffer == b.m_buffer || a.view() == b.view();
    }
    friend bool operator==(const KxString& a, std::string_view b) { return a.view() == b; }
    friend bool operator==(const KxString& a, const char* b) { return a.view() == std::string_view(b ? b : ""); }
    friend bool operator<(const KxString& a, const KxString& b) { return a.compareWith(b.view()) < 0; }

protected:
    explicit constexpr KxString(KxStringBuffer* constant) : m_buffer(constant, KxUncounted{}) {}

private:
    /** Returns a buffer that only this string holds; a new one has room for `capacity` characters. */
    KxStringBuffer& own(std::size_t capacity);

    KxHandle<KxStringBuffer> m_buffer;
};

KX_UTIL_API std::ostream& operator<<(std::ostream& out, const KxString& text);

/** Holds the constant of a KxConstString. Never destroyed, so that the static destructors of the host can still read
    it. */
class KxConstStringStorage {
protected:
    constexpr KxConstStringStorage(const char* literal, std::size_t length) : m_room(literal, length) {}

    union Room {
        constexpr Room(const char* literal, std::size_t length)
            : constant(literal, length, KxStringBuffer::Immortal::Tag) {}
        ~Room() {}
        KxStringBuffer constant;
    };
    Room m_room;
};

/** A string constant made from a literal at compile time; never counted, never freed. Always `constinit`:
    `constinit const KxConstString KxSipViaHeader::sToken{"Via"};` */
class KX_UTIL_API KxConstString final : private KxConstStringStorage, public KxString {
public:
    template <std::size_t N>
    constexpr KxConstString(const char (&literal)[N]) : KxConstString(literal, N - 1) {}
    /** As above, from a NUL-terminated text that lives as long as the process. */
    constexpr KxConstString(const char* text, std::size_t length)
        : KxConstStringStorage(text, length), KxString(&m_room.constant) {}
    /** The constant itself, which must not be changed. */
    KxStringBuffer* constant() { return &m_room.constant; }
    KxConstString(const KxConstString&) = delete;
    KxConstString& operator=(const KxConstString&) = delete;
};

inline KxString::KxString(const KxConstString& constant)
    : m_buffer(const_cast<KxConstString&>(constant).constant(), KxUncounted{}) {}
