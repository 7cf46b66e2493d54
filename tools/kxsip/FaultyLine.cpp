#include "tools/kxsip/FaultyLine.h"

#include "sipobject/headers/KxSipHeader.h"
#include "tools/kxsip/Printable.h"
#include "util/KxAscii.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxException.h"

#include <algorithm>

namespace {

constexpr std::size_t kShown = 60;

std::optional<std::string> faultOf(std::string_view line) {
    KxByteArrayInputStream in(line);
    try {
        KxSipHeader::sConstructFrom(in);
    } catch (const KxHandle<KxException>& why) {
        return printable(why->getExceptionMessage());
    }
    return std::nullopt;
}

/** Returns the position after the header line at `position` and its continuation lines. */
std::size_t endOfHeader(std::string_view message, std::size_t position) {
    std::size_t end = message.find('\n', position);
    while (end != std::string_view::npos && end + 1 < message.size() &&
           (message[end + 1] == ' ' || message[end + 1] == '\t')) {
        end = message.find('\n', end + 1);
    }
    return end == std::string_view::npos ? message.size() : end + 1;
}

} // namespace

std::optional<FaultyLine> FaultyLine::sFind(std::string_view message) {
    std::size_t number = 2;
    std::size_t position = std::min(message.find('\n'), message.size() - 1) + 1;
    while (position < message.size()) {
        const std::size_t end = endOfHeader(message, position);
        const std::string_view line = message.substr(position, end - position);
        if (KxAscii::trim(line).empty()) {
            break;
        }
        if (std::optional<std::string> why = faultOf(line)) {
            const std::string_view text = KxAscii::trim(line);
            return FaultyLine{number, printable(text.substr(0, kShown)) + (text.size() > kShown ? "..." : ""),
                              std::move(*why)};
        }
        number += static_cast<std::size_t>(std::count(line.begin(), line.end(), '\n'));
        position = end;
    }
    return std::nullopt;
}
