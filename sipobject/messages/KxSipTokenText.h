#pragma once

#include "sipobject/KxSipText.h"
#include "util/KxCharSet.h"

/** Checks texts that must be tokens: methods, tags, branches, hosts. */
class KxSipTokenText {
public:
    KxSipTokenText() = delete;

    /** The text, which is a token. Throws KxSipParseError for no text and for other characters, with `what` in the
        error text. token = 1*(alphanum / "-" / "." / "!" / "%" / "*" / "_" / "+" / "`" / "'" / "~") [RFC 3261 25.1] */
    static KxString sChecked(const KxSipText& text, std::string_view what);
};
