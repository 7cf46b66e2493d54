#pragma once

#include "sipheaders/HeadersApi.h"
#include "sipobject/KxSipText.h"
#include "util/KxString.h"

#include <cstdint>
#include <optional>
#include <string_view>

class KxSipLine;

/** The values of header parameters, which are kept as they were received: what they mean, and how they are written.
    gen-value = token / host / quoted-string                                  [RFC 3261 25.1] */
class KX_HEADERS_API KxSipParameterValue {
public:
    KxSipParameterValue() = delete;

    /** The value, without quotes and escapes if it is a quoted string. Nil stays nil. */
    static KxString sText(const KxString& value);
    /** A quoted string. Throws KxSipParseError if the text contains CR, LF or NUL. */
    static KxString sQuoted(KxSipText text);
    /** The text itself if it is a token, else a quoted string. Throws as sQuoted does. */
    static KxString sTokenOrQuoted(KxSipText text);

    /** Whether the text is one or more characters of a token. [RFC 3261 25.1] */
    static bool sIsToken(std::string_view text);
    /** Skips white space and takes a quoted string, with its quotes, or the text up to white space, a comma, ";",
        quotes, "<" or ">". Empty if there is none, or the quotes are not closed. */
    static std::string_view sTake(KxSipLine& line);

    /** A number of digits only, up to 4294967295, also if it is quoted. None for nil and for anything else. */
    static std::optional<std::uint32_t> sNumber(const KxString& value);
    static KxString sOfNumber(std::uint32_t number);
};
