#pragma once

#include <optional>
#include <string_view>

/** Looks into the text of a message that the library may refuse, or that is not there in full. Continuation lines are
    not joined. */
namespace HeaderScan {

/** The first line, without its end. */
std::string_view firstLine(std::string_view message);

/** The value of the first header of that name, or of its compact form where it has one (else 0); letter case ignored,
    blanks around it gone. */
std::optional<std::string_view> valueOf(std::string_view message, std::string_view name, char compact);

} // namespace HeaderScan
