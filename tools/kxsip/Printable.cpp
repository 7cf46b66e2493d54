#include "tools/kxsip/Printable.h"

#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>

namespace {

/** Returns the length of the first character if it may be shown, else 0. */
std::size_t shownLength(std::string_view text) {
    const std::size_t length = Utf8::characterLength(text);
    return text.front() == '\t' || text.front() == '\n' || Utf8::changesDirection(text.substr(0, length)) ? 0 : length;
}

} // namespace

std::string printable(std::string_view text) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = shownLength(text);
        const auto byte = static_cast<unsigned char>(text.front());
        if (length > 0) {
            result += text.substr(0, length);
        } else {
            result += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}
