#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** Text as it is seen. Characters are counted, not bytes; wide and combining ones count as one. */
namespace Utf8 {

std::size_t length(std::string_view text);
/** The first `most` characters, the last of them an ellipsis where there are more. */
std::string shortened(std::string_view text, std::size_t most);
/** The text for XML and HTML, also within attributes: markup characters as entities; what is no UTF-8 or not allowed in
    XML, and control characters but tab and line feed, as \xNN; a carriage return in front of a line feed goes.
    [XML 1.0 2.2] */
std::string escaped(std::string_view text);

} // namespace Utf8
