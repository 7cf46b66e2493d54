#pragma once

#include "util/KxBytes.h"
#include "util/KxDigits.h"
#include "util/KxString.h"
#include "util/UtilApi.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

/** A sink of bytes. The base keeps a window of free room, so that writing is a copy and a pointer move. A derived class
    takes what does not fit (writeBeyondWindow) and may offer a new window. A class without a window gets every piece
    through writeBeyondWindow. To be used by one thread at a time. */
class KX_UTIL_API KxOutputStream {
public:
    virtual ~KxOutputStream();
    KxOutputStream(const KxOutputStream&) = delete;
    KxOutputStream& operator=(const KxOutputStream&) = delete;

    /** One byte. */
    void write(char byte) {
        if (m_cursor != m_end) {
            *m_cursor++ = byte;
        } else {
            writeBeyondWindow(&byte, 1);
        }
    }
    /** `count` bytes from `buffer + offset`. */
    void write(const void* buffer, std::size_t offset, std::size_t count) {
        write(std::string_view(static_cast<const char*>(buffer) + offset, count));
    }
    void write(std::string_view text) {
        if (text.size() <= static_cast<std::size_t>(m_end - m_cursor)) {
            m_cursor = KxBytes::copy(m_cursor, text.data(), text.size());
        } else {
            writeBeyondWindow(text.data(), text.size());
        }
    }
    /** A piece for writeAll: a separator and a number, or nothing. */
    struct SeparateNumber {
        bool isPresent;
        char separator;
        std::uint32_t number;
    };
    /** Texts, characters and numbers (std::uint32_t), one after the other. The bytes of the window after them may be
        overwritten. */
    template <class... Pieces>
    [[gnu::always_inline]] void writeAll(const Pieces&... pieces) {
        if (!writeIfRoom(pieces...)) [[unlikely]] {
            writeEach<Argument<Pieces>...>(pieces...);
        }
    }
    /** As writeAll, if no text is long and the window has plenty of room, which is looked for once; else writes nothing
        and returns false. Makes no call. */
    template <class... Pieces>
    [[nodiscard, gnu::always_inline]] bool writeIfRoom(const Pieces&... pieces) {
        return putIfRoom<kSlackOf<Pieces...>>(sSource(pieces)...);
    }
    /** Passes on what the sink has held back. */
    virtual void flush() {}

    KxOutputStream& operator<<(std::string_view text) {
        write(text);
        return *this;
    }
    /** Null writes nothing. */
    KxOutputStream& operator<<(const char* text) { return text == nullptr ? *this : *this << std::string_view(text); }
    KxOutputStream& operator<<(const KxString& text) { return *this << text.view(); }
    KxOutputStream& operator<<(char c) {
        write(c);
        return *this;
    }
    KxOutputStream& operator<<(int number) { return *this << static_cast<long>(number); }
    KxOutputStream& operator<<(unsigned number) { return *this << static_cast<unsigned long>(number); }
    KxOutputStream& operator<<(long number);
    KxOutputStream& operator<<(unsigned long number);
    KxOutputStream& operator<<(SeparateNumber part) {
        return part.isPresent ? *this << part.separator << part.number : *this;
    }
    KxOutputStream& operator<<(KxOutputStream& (*manipulator)(KxOutputStream&)) { return manipulator(*this); }

protected:
    KxOutputStream() = default;

    /** Takes bytes for which the window has no room. */
    virtual void writeBeyondWindow(const char* bytes, std::size_t count) = 0;

    /** Offers [begin, end) as free room. Later, the bytes from `begin` to cursor() have been written; those after it
        may have been overwritten. */
    void setWindow(char* begin, char* end) {
        m_cursor = begin;
        m_end = end;
    }
    char* cursor() const { return m_cursor; }

private:
    template <class Piece>
    using Argument = std::conditional_t<std::is_base_of_v<KxString, Piece>, const KxString&, Piece>;

    template <class... Pieces>
    static constexpr std::size_t kSlackOf = (std::is_base_of_v<KxString, Pieces> || ...) ? KxBytes::kSlack : 0;

    static KxString::Source sSource(const KxString& text) { return KxString::Source(text); }
    template <class Piece>
    static const Piece& sSource(const Piece& piece) requires(!std::is_base_of_v<KxString, Piece>) {
        return piece;
    }
    static std::size_t sLengthOf(std::string_view text) { return text.size(); }
    static std::size_t sLengthOf(KxString::Source text) { return text.length(); }
    static constexpr std::size_t sLengthOf(char) { return 1; }
    static constexpr std::size_t sLengthOf(std::uint32_t) { return KxDigits::kMost; }
    static constexpr std::size_t sLengthOf(SeparateNumber) { return KxDigits::kMost + 1; }
    /** The length if it is not known to be short. */
    template <class Piece>
    static std::size_t sTextLengthOf(const Piece& piece) {
        return requires {
            piece.length();
        }
        ? sLengthOf(piece) : 0;
    }
    [[gnu::always_inline]] static char* sPut(char* at, std::string_view text) {
        return KxBytes::copyMedium(at, text.data(), text.size());
    }
    [[gnu::always_inline]] static char* sPut(char* at, KxString::Source text) { return text.copyTo(at); }
    static char* sPut(char* at, char c) {
        *at = c;
        return at + 1;
    }
    [[gnu::always_inline]] static char* sPut(char* at, std::uint32_t number) { return KxDigits::put(at, number); }
    [[gnu::always_inline]] static char* sPut(char* at, SeparateNumber part) {
        return part.isPresent ? KxDigits::put(sPut(at, part.separator), part.number) : at;
    }
    template <std::size_t kSlack, class... Sources>
    [[gnu::always_inline]] bool putIfRoom(const Sources&... pieces) {
        const bool isEachMedium = (sTextLengthOf(pieces) | ...) <= KxBytes::kMediumCopy;
        const std::size_t most = (sLengthOf(pieces) + ... + kSlack);
        if (!isEachMedium || most > static_cast<std::size_t>(m_end - m_cursor)) [[unlikely]] {
            return false;
        }
        char* at = m_cursor;
        ((at = sPut(at, pieces)), ...);
        m_cursor = at;
        return true;
    }
    /** Looks for room before each piece. */
    template <class... Pieces>
    [[gnu::noinline]] void writeEach(Pieces... pieces) {
        ((*this << pieces), ...);
    }
    template <class Number>
    void writeNumber(Number number);

    char* m_cursor = nullptr;
    char* m_end = nullptr;
};

/** Writes CR LF, the line end of SIP. Does not flush. */
KX_UTIL_API KxOutputStream& endl(KxOutputStream& out);
