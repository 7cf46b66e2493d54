#pragma once

#include "util/KxBytes.h"
#include "util/KxCharSet.h"
#include "util/KxInputStream.h"

#include <memory>
#include <string>
#include <string_view>

/** A piece of text taken from a stream. If the stream is whole, the text is not copied; otherwise this object holds a
    copy. The view is valid as long as this object and the bytes of the stream exist. */
class KX_UTIL_API KxScannedText {
public:
    /** Takes the characters up to the first delimiter (which stays unread) or the end. */
    [[gnu::always_inline]] std::string_view until(KxInputStream& in, const KxCharSet& delimiters) {
        if (in.isWhole()) {
            const std::string_view window = in.window();
            const char* const end = delimiters.find(window.data(), window.data() + window.size(), in.readableEnd());
            const std::string_view taken(window.data(), static_cast<std::size_t>(end - window.data()));
            in.consume(taken.size());
            return taken;
        }
        return copyUntil(in, delimiters);
    }

    /** As above, for a few delimiters that are far apart: faster over long text. */
    template <char... kDelimiters>
    [[gnu::always_inline]] std::string_view until(KxInputStream& in) {
        if (in.isWhole()) {
            const std::string_view window = in.window();
            const char* const end =
                KxBytes::findAny<kDelimiters...>(window.data(), window.data() + window.size(), in.readableEnd());
            const std::string_view taken(window.data(), static_cast<std::size_t>(end - window.data()));
            in.consume(taken.size());
            return taken;
        }
        static constexpr char kSet[] = {kDelimiters...};
        return copyUntil(in, KxCharSet(std::string_view(kSet, sizeof kSet)));
    }

    /** Skips white space, then as `until`. */
    [[gnu::always_inline]] std::string_view token(KxInputStream& in, const KxCharSet& delimiters) {
        skipSpace(in);
        return until(in, delimiters);
    }

    /** Consumes white space: blanks, tabs, line ends, form feeds. */
    static void skipSpace(KxInputStream& in) {
        do {
            const std::string_view window = in.window();
            const char* const end = window.data() + window.size();
            const char* const at = KxAscii::skipSpace(window.data(), end);
            in.consume(static_cast<std::size_t>(at - window.data()));
            if (at != end) {
                return;
            }
        } while (in.fill());
    }

private:
    std::string_view copyUntil(KxInputStream& in, const KxCharSet& delimiters);

    std::unique_ptr<std::string> m_copy;
};
