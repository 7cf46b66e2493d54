#include "sipobject/headers/KxSipNumberText.h"

#include <charconv>

KxSipFault KxSipNumberText::sRead(KxSipLine& line, std::uint32_t most, std::uint32_t& number, const char* otherwise) {
    static constexpr KxCharSet kEnd(" \t\r\n;(");
    const std::string_view text = line.token(kEnd);
    std::uint32_t read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size() || read > most) {
        return KxSipFault(otherwise);
    }
    number = read;
    return {};
}
