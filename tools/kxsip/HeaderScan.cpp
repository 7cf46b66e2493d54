#include "tools/kxsip/HeaderScan.h"

#include "util/KxAscii.h"

#include <algorithm>

std::string_view HeaderScan::firstLine(std::string_view message) {
    return KxAscii::trim(message.substr(0, message.find('\n')));
}

std::optional<std::string_view> HeaderScan::valueOf(std::string_view message, std::string_view name, char compact) {
    std::size_t position = 0;
    while (position < message.size()) {
        const std::size_t end = std::min(message.find('\n', position), message.size());
        const std::string_view line = message.substr(position, end - position);
        if (position > 0 && KxAscii::trim(line).empty()) {
            break; // the body begins
        }
        const std::size_t colon = line.find(':');
        if (position > 0 && colon != std::string_view::npos) {
            const std::string_view found = KxAscii::trim(line.substr(0, colon));
            if (KxAscii::equalsNoCase(found, name) || (compact != 0 && KxAscii::equalsNoCase(found, {&compact, 1}))) {
                return KxAscii::trim(line.substr(colon + 1));
            }
        }
        position = end + 1;
    }
    return std::nullopt;
}
