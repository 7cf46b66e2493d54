#pragma once

#include "util/KxByteArrayInputStream.h"
#include "util/KxLineEnd.h"

/** Runs `parse` over a stream whose window holds the whole line, continuation lines included: over `in` itself when it
    is whole, else over a view of what was looked ahead, after which `in` is moved on by what the parser took (also when
    it throws). So grammars that work on slices of text need only one form. */
template <class Parse>
void KxWithWholeWindow(KxInputStream& in, Parse&& parse) {
    if (in.isWhole()) {
        parse(in);
        return;
    }
    while (KxUnfoldedLineEnd(in.window()) == std::string_view::npos && in.extendWindow()) {
    }
    const std::string_view line = in.window().substr(0, KxUnfoldedLineEnd(in.window()));
    struct Consumed {
        KxInputStream& outer;
        KxByteArrayInputStream inner;
        std::size_t length;
        ~Consumed() { outer.consume(length - inner.window().size()); }
    } view{in, KxByteArrayInputStream(line), line.size()};
    parse(view.inner);
}
