#pragma once

#include "util/KxByteArrayInputStream.h"
#include "util/KxStreamTokenizer.h"

/** Calls `parse` with a stream whose window holds the whole line, including continuation lines, and returns what
    `parse` returns. If `in` is whole, the stream is `in` itself. Otherwise it is a view of the line; afterwards (also
    when `parse` throws) `in` is advanced by the bytes that `parse` consumed. So a grammar that works on slices of text
    needs only one form. */
template <class Parse>
auto KxWithWholeWindow(KxInputStream& in, Parse&& parse) {
    if (in.isWhole()) {
        return parse(in);
    }
    std::size_t searched = 0; // the line does not end before this; a last LF depends on the character after it
    std::size_t end = KxStreamTokenizer::sFindLineEnd(in.window());
    while (end == std::string_view::npos) {
        const std::size_t known = in.window().size();
        const bool more = in.extendWindow();
        searched = more && known != 0 ? known - 1 : searched;
        end = more ? KxStreamTokenizer::sFindLineEnd(in.window().substr(searched)) : known - searched;
    }
    const std::string_view line = in.window().substr(0, searched + end);
    struct Consumed {
        KxInputStream& outer;
        KxByteArrayInputStream inner;
        std::size_t length;
        ~Consumed() { outer.consume(length - inner.window().size()); }
    } view{in, KxByteArrayInputStream(line), line.size()};
    return parse(view.inner);
}
