#include "util/KxByteScan.h"
#include "util/KxInputStream.h"
#include "util/KxParametersStore.h"

#include <algorithm>

namespace {

constinit const KxConstString s_nothing("");

/** Finds all characters at which a part of a pair may end, white space and characters that need quotes. What else it
    finds is rare. */
using Marks = KxByteScan<',', ';', '>'>;

/** Returns where the quoted text that begins at `at` ends: at its closing quote or, in a stream, at the line end. */
template <bool kInStream>
const char* findQuoteEnd(const char* at, const char* end) {
    const auto next = [end](const char* from) {
        return kInStream ? KxBytes::findAny<'"', '\\', '\r', '\n'>(from, end) : KxBytes::findAny<'"', '\\'>(from, end);
    };
    const auto afterEscape = [end](const char* backslash) { // in a stream, a line end cannot be quoted
        const char* const quoted = backslash + 1;
        return quoted == end || (kInStream && (*quoted == '\r' || *quoted == '\n')) ? quoted : quoted + 1;
    };
    for (at = next(at); at != end && *at == '\\'; at = next(afterEscape(at))) {
    }
    return at;
}

constexpr std::string_view textOf(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

/** Whether no character of the text needs quotes. */
bool isPlain(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) <= ' ' || c == '"' || c == '<' || c == '>';
    });
}

/** Whether the text is a name, or a name and a value that is a quoted text or has no characters that need quotes.
    `equals` is null if there is no value. */
bool isExact(const char* begin, const char* equals, const char* end) {
    const std::string_view name = KxAscii::trim(textOf(begin, equals == nullptr ? end : equals));
    const std::string_view value = equals == nullptr ? std::string_view() : KxAscii::trim(textOf(equals + 1, end));
    if (name.empty() || !isPlain(name)) {
        return false;
    }
    if (value.empty() || value.front() != '"') {
        return isPlain(value);
    }
    const char* const last = &value.back(); // every quoted text is known to be closed
    return last != value.data() && findQuoteEnd<true>(value.data() + 1, last) == last;
}

} // namespace

[[gnu::always_inline]] inline void KxParameters::store(std::string_view name, std::string_view value) {
    if (name.empty() && value.empty()) {
        return;
    }
    KxString held = value.empty() ? KxString(s_nothing) : KxString(value);
    Pair* const present = m_size == 0 ? nullptr : find(name);
    if (present != nullptr) {
        present->value = std::move(held);
    } else {
        append(KxString(name), std::move(held));
    }
}

/** Reads the pairs in one pass; returns where it stopped, or null for a pair that is not exact. A usual pair is a name,
    or a name, "=" and a value, with nothing else in it that Marks finds. */
template <KxParameters::Reading kReading>
const char* KxParameters::parsePairs(const char* begin, const char* const end, const char* readable) {
    Marks marks(begin, end, readable);
    while (true) {
        const char* at = marks.next();
        const char* const nameEnd = at;
        if (at != end && *at == '=') {
            at = marks.next();
        }
        if ((at == end || endsPair<kReading>(*at)) && (kReading != Reading::Exact || nameEnd != begin)) [[likely]] {
            store(textOf(begin, nameEnd), textOf(at == nameEnd ? at : nameEnd + 1, at));
        } else {
            at = parseUnusualPair<kReading>(begin, end, readable);
            if (kReading == Reading::Exact && at == nullptr) {
                return nullptr;
            }
            marks.skipTo(at == end ? at : at + 1);
        }
        if (at == end || *at != ';') {
            return at;
        }
        begin = at + 1;
    }
}

/** Reads one pair of any kind; returns where it ends, or null if it is not exact. */
template <KxParameters::Reading kReading>
[[gnu::noinline]] const char* KxParameters::parseUnusualPair(const char* begin, const char* const end,
                                                             const char* readable) {
    constexpr bool kInStream = kReading != Reading::Text;
    constexpr bool kExact = kReading == Reading::Exact;
    Marks marks(begin, end, readable);
    const char* equals = nullptr;
    const char* at = marks.next();
    for (; at != end && !endsPair<kReading>(*at); at = marks.next()) {
        if (*at == '=') {
            equals = equals == nullptr ? at : equals;
        } else if (*at == '"') {
            at = findQuoteEnd<kInStream>(at + 1, end);
            const bool isClosed = at != end && *at == '"';
            if (kExact && !isClosed) {
                return nullptr;
            }
            at = isClosed ? at + 1 : at;
            marks.skipTo(at);
        }
    }
    if (kExact && !isExact(begin, equals, at)) {
        return nullptr;
    }
    store(KxAscii::trim(textOf(begin, equals == nullptr ? at : equals)),
          KxAscii::trim(textOf(equals == nullptr ? at : equals + 1, at)));
    return at;
}

void KxParameters::parse(std::string_view text, const char* readable) {
    parsePairs<Reading::Text>(text.data(), text.data() + text.size(), readable);
}

void KxParameters::parse(KxInputStream& in) {
    const std::size_t length = in.isWhole() ? in.window().size() : in.fillLine();
    const char* const begin = in.window().data();
    const char* const end = parsePairs<Reading::Stream>(begin, begin + length, in.readableEnd());
    in.consume(static_cast<std::size_t>(end - begin));
}

bool KxParameters::parseExactly(KxInputStream& in) {
    const std::size_t length = in.fillLine();
    const char* const begin = in.window().data();
    const char* const end = parsePairs<Reading::Exact>(begin, begin + length, in.readableEnd());
    in.consume(end == nullptr ? 0 : static_cast<std::size_t>(end - begin));
    return end != nullptr;
}
