#pragma once

#include "util/KxByteArrayInputStream.h"
#include "util/KxLineEnd.h"

/** Runs `parse` over a stream whose window holds the whole line, continuation lines included: over `in` itself when it
    is whole, else over a view of what was looked ahead, after which `in` is moved on by what the parser took (also when
    it throws). So grammars that work on slices of text need only one form. Returns what `parse` returns. */
template <class Parse>
auto KxWithWholeWindow(KxInputStream& in, Parse&& parse) {
    if (in.isWhole()) {
        return parse(in);
    }
    std::size_t searched = 0; // the line ends nowhere before; what follows a last LF decides on that one
    std::size_t end = KxUnfoldedLineEnd(in.window());
    while (end == std::string_view::npos) {
        const std::size_t known = in.window().size();
        const bool more = in.extendWindow();
        searched = more && known != 0 ? known - 1 : searched;
        end = more ? KxUnfoldedLineEnd(in.window().substr(searched)) : known - searched;
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
