#pragma once

#include "core/FastString.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/KxSipLineScan.h"
#include "sipobject/SipApi.h"
#include "util/KxCharSet.h"
#include "util/KxInputStream.h"

#include <cstring>
#include <optional>
#include <string_view>

/** The text that a grammar reads, and what the steps of reading share. Made once for each message or other outermost
    operation, and passed to every step. It finds header lines, their colons, the commas between values, and the ends of
    tokens.

    It is a whole stream, so what it finds are views of the bytes, valid as long as these. Used by one thread at a
    time. */
class KX_SIP_API KxSipLine final : public KxInputStream {
public:
    /** Empty until the first take. */
    KxSipLine() : KxSipLine(std::string_view()) {}
    /** Reads a text, which must outlive the object. */
    explicit KxSipLine(std::string_view text)
        : KxInputStream(text.data(), text.data() + text.size(), text.data() + text.size()) {}
    /** Reads the first logical line of the stream, or all bytes of a stream that is whole. What is read is consumed
        from the stream when this object is destroyed. A host that reads many URLs from one stream makes this object
        first and reads from it: the line is then scanned once, not once for each URL. */
    explicit KxSipLine(KxInputStream& source);
    ~KxSipLine() override {
        if (m_source != nullptr) {
            consumeFromSource();
        }
    }

    /** Takes the next header line of a message, with its continuation lines, out of the stream. Afterwards this object
        reads the text after the colon, up to and including CR LF. Returns a fault for a line without name or colon,
        which is taken, too. A plain line (a name directly followed by the colon, CR LF at the end, not continued) is
        not copied. [RFC 3261 7.3.1] */
    [[gnu::always_inline]] KxSipFault take(KxInputStream& in) {
        const char* const begin = in.window().data();
        const char* const end = begin + in.window().size();
        const char* const readable = in.readableEnd();
        const KxSipLineScan scan(begin, readable);
        const char* const stop = scan.stop();
        if (stop == nullptr || end - stop <= 2 || !sIsPlainBreak(stop) || *begin <= ' ' || scan.colon() == begin ||
            scan.colon()[-1] <= ' ' || !in.isWhole()) [[unlikely]] {
            return takeUnplain(in);
        }
        in.consume(static_cast<std::size_t>(stop - begin) + 2);
        m_name = std::string_view(begin, static_cast<std::size_t>(scan.colon() - begin));
        m_isPlain = true;
        moveTo(scan.colon() + 1, stop + 2, readable);
        return {};
    }
    /** As take, for a line that may have an empty name. A line without a colon is all name. */
    KxSipFault takeUnnamed(KxInputStream& in);
    /** The name before the colon, without white space around it. */
    std::string_view name() const { return m_name; }
    /** The name that selects the class: taken from the raw bytes, so that a folded name matches no registered name.
        Empty for a line without name or colon. */
    std::string_view key() const { return m_isPlain ? m_name : m_key; }
    /** Whether the line that was taken is plain; the key is then the name. */
    bool isPlain() const { return m_isPlain; }

    /** The text after the colon of a line that was taken, without CR LF, however much of it has been read. */
    std::string_view values() const;

    /** Makes a value that is kept as text a fault, for a reader that reads a faulty line again, value by value. */
    void setReadTwice() { m_isReadTwice = true; }
    bool isReadTwice() const { return m_isReadTwice; }
    /** From now on no faulty line is read again, since the message will be refused. */
    void setLost() { m_isLost = true; }
    bool isLost() const { return m_isLost; }
    /** Notes why a value is kept as text. The first note is kept. */
    void noteKept(const KxSipFault& why) { m_kept = m_kept.value_or(why); }
    KxSipFault kept() const { return m_kept.value_or(KxSipFault()); }

    /** Whether nothing is left but the line end. */
    bool isAtEnd() const {
        const std::string_view left = window();
        return left.empty() || (left.size() == 2 && std::memcmp(left.data(), "\r\n", 2) == 0);
    }
    /** Skips blanks; returns false if only white space follows. */
    bool skipToText() {
        const char* at = begin();
        if (end() - at >= 2 && at[0] == ' ' && at[1] > ' ') [[likely]] {
            moveTo(at + 1);
            return true;
        }
        while (at != end() && (*at == ' ' || *at == '\t')) {
            ++at;
        }
        moveTo(at);
        return at != end() && (*at > ' ' || KxAscii::skipSpace(at, end()) != end());
    }
    /** Skips white space and the comma after it; returns false, without moving, if there is something else. */
    bool skipComma() {
        const char* const at = KxAscii::skipSpace(begin(), end());
        if (at == end() || *at != ',') {
            return false;
        }
        moveTo(at + 1);
        return true;
    }
    /** Skips what is left of a value, and the comma after it; returns false, without moving, if there is no comma. */
    bool skipToNextValue() {
        const char* at = begin();
        while (at != end() && *at != ',') {
            ++at;
        }
        if (at == end()) {
            return false;
        }
        moveTo(at + 1);
        return true;
    }

    /** Takes the characters up to the first delimiter (which stays unread) or the end. */
    [[gnu::always_inline]] std::string_view until(const KxCharSet& delimiters) {
        return takeTo(delimiters.find(begin(), end(), readableEnd()));
    }
    /** As above, for a few delimiters that are far apart: faster over long text. */
    template <char... kDelimiters>
    [[gnu::always_inline]] std::string_view until() {
        return takeTo(KxBytes::findAny<kDelimiters...>(begin(), end(), readableEnd()));
    }
    /** Takes the characters up to the first CR or LF, or the end. */
    std::string_view untilBreak() {
        return m_isPlain && end() - begin() >= 2 ? takeTo(end() - 2) : until<'\r', '\n'>();
    }
    /** Skips white space, then as `until`. */
    [[gnu::always_inline]] std::string_view token(const KxCharSet& delimiters) {
        skipSpace();
        return until(delimiters);
    }
    /** Skips white space: blanks, tabs, line ends, form feeds. */
    void skipSpace() { moveTo(KxAscii::skipSpace(begin(), end())); }

    /** Whether an unquoted "@" follows `at`, a place in the text, before an unquoted ">" and a line end. Each URL of a
        line asks this for its own place, so the results of the scans are kept. */
    bool hasUserPart(const char* at);

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override;

private:
    /** Where the last scans for an "@" ended. */
    struct UserParts {
        const char* at = nullptr; ///< Where the last scan was asked for; null before the first.
        bool quoted;              ///< Whether the number of quotes before `at` is odd.
        const char* stop[2];      ///< Where the scan ended, by `quoted` at its start; null when not known.
        bool found[2];            ///< Whether it ended at an "@", by `quoted` at its start.
    };

    const char* begin() const { return window().data(); }
    const char* end() const { return window().data() + window().size(); }
    void moveTo(const char* begin, const char* end, const char* readable) {
        setWindow(begin, end, readable);
        m_userParts.at = nullptr;
    }
    void moveTo(const char* at) { consume(static_cast<std::size_t>(at - begin())); }
    std::string_view takeTo(const char* stop) {
        const std::string_view taken(begin(), static_cast<std::size_t>(stop - begin()));
        consume(taken.size());
        return taken;
    }
    /** Whether the line break at `at` is CR LF and the line is not continued. */
    static bool sEndsPlainly(const char* at, const char* end) {
        return end - at > 2 ? sIsPlainBreak(at) : end - at == 2 && at[0] == '\r' && at[1] == '\n';
    }
    /** As above, for a place that is followed by two bytes at least. */
    static bool sIsPlainBreak(const char* at) {
        return KxBytes::load<std::uint16_t>(at) == KxBytes::load<std::uint16_t>("\r\n") && at[2] != ' ' &&
               at[2] != '\t';
    }
    KxSipFault takeUnplain(KxInputStream& in);
    std::string_view takeUnfolded(KxInputStream& in);
    std::string_view takeJoined(KxInputStream& in);
    void consumeFromSource();

    std::string_view m_name;
    std::string_view m_key; ///< Not set if the line is plain.
    UserParts m_userParts;
    KxInputStream* m_source = nullptr; ///< Where the text is consumed from in the end; null for none.
    std::optional<KxSipFault> m_kept;  ///< Why a value is kept as text.
    bool m_isPlain = false; ///< Whether the text is a plain line: its only control characters are CR LF at its end.
    bool m_isReadTwice = false;
    bool m_isLost = false;
    Oskan::FastString<256> m_unfolded; ///< The line, if it was folded.
};
