#pragma once

#include "util/UtilApi.h"

#include <cstddef>
#include <string_view>

/** How long the first logical line of the text is, its LF included: up to a LF that no blank or tab follows. `npos`
    when the text ends before that is known. */
KX_UTIL_API std::size_t KxUnfoldedLineEnd(std::string_view text);
