#pragma once

#include <optional>
#include <string_view>

/** Functions for the text of a message that the library may refuse, or that is incomplete. Continuation lines are not
    joined. */
namespace HeaderScan {

/** Returns the first line without its line end, trimmed. */
std::string_view firstLine(std::string_view message);

/** Returns the value of the first header with this name or compact name, trimmed, or nothing. Letter case is ignored.
    `compact` is 0 if there is no compact name. */
std::optional<std::string_view> valueOf(std::string_view message, std::string_view name, char compact);

} // namespace HeaderScan
