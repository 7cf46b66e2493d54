#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** Functions for displayed text. They count characters, not bytes; wide and combining characters count as one. */
namespace Utf8 {

std::size_t length(std::string_view text);
/** Returns the number of bytes of the first character of a text that is not empty. Returns 0 if it is not UTF-8, or is a
    control character other than tab and line feed. [RFC 3629 4] */
std::size_t characterLength(std::string_view text);
/** Returns the text, or, if it has more than `most` characters, its first ones and an ellipsis, `most` in all. */
std::string shortened(std::string_view text, std::size_t most);
/** Returns the text for XML and HTML, also within attributes. Markup characters become entities. Bytes that are not
    UTF-8, characters that XML does not allow, and control characters except tab and line feed become \xNN. A carriage
    return before a line feed is dropped. [XML 1.0 2.2] */
std::string escaped(std::string_view text);

} // namespace Utf8
