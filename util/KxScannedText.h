#pragma once

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

private:
    std::string_view copyUntil(KxInputStream& in, const KxCharSet& delimiters);

    std::unique_ptr<std::string> m_copy;
};
