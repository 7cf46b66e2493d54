#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** Functions for displayed text. */
namespace Utf8 {

/** Returns the columns that the text takes on a terminal: two for a wide character of East Asia, none for one that
    combines with the character before it. */
std::size_t width(std::string_view text);
/** Returns the number of bytes of the first character of a text that is not empty. Returns 0 if it is not UTF-8, or is
    a control character other than tab and line feed. [RFC 3629 4] */
std::size_t characterLength(std::string_view text);
/** Whether the character changes the direction of the text around it. [UAX #9 2] */
bool changesDirection(std::string_view character);
/** Returns the text, or, if it takes more than `most` columns, its beginning and the ellipsis, at most `most` columns
    in all. */
std::string shortened(std::string_view text, std::size_t most, std::string_view ellipsis = "\u2026");
/** Returns the text for XML and HTML, also within attributes. Markup characters become entities. Bytes that are not
    UTF-8, characters that XML does not allow, control characters except tab and line feed, and those that change the
    direction of text become \xNN. A carriage return before a line feed is dropped. [XML 1.0 2.2] */
std::string escaped(std::string_view text);

} // namespace Utf8
