#include "sipobject/headers/KxSipNumberText.h"

#include "sipobject/headers/KxSipDecimal.h"

#include <algorithm>

KxSipFault KxSipNumberText::sRead(KxSipLine& line, std::uint32_t most, std::uint32_t& number, const char* otherwise) {
    static constexpr KxCharSet kEnd(" \t\r\n;(");
    line.skipSpace();
    const std::string_view text = line.window();
    const std::uint64_t tooMuch = std::uint64_t{most} + 1;
    std::uint64_t read = 0;
    std::size_t count = 0;
    for (; count < text.size() && KxAscii::isDigit(text[count]); ++count) {
        read = std::min(read * 10 + static_cast<unsigned>(text[count] - '0'), tooMuch);
    }
    if (count == 0 || read == tooMuch || (count < text.size() && !kEnd.contains(text[count]))) {
        return KxSipFault(otherwise);
    }
    line.consume(count);
    number = static_cast<std::uint32_t>(read);
    return {};
}

std::optional<std::uint32_t> KxSipNumberText::sSeconds(std::string_view text) {
    const std::optional<std::uint64_t> number =
        text.find('.') == std::string_view::npos ? KxSipDecimal::sRead(text, 0) : std::nullopt;
    return number ? std::optional(static_cast<std::uint32_t>(std::min<std::uint64_t>(*number, UINT32_MAX)))
                  : std::nullopt;
}

KxString KxSipNumberText::sText(std::uint32_t number) {
    return KxSipDecimal::sWrite(number, 0);
}
