#pragma once

#include "util/UtilApi.h"

#include <cstddef>
#include <string_view>

/** The length of the first logical line of the text, including its LF: the line ends at a LF that no blank or tab
    follows. `npos` when the text ends before this is known. */
KX_UTIL_API std::size_t KxUnfoldedLineEnd(std::string_view text);
