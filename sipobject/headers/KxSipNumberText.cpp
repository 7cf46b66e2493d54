#include "sipobject/headers/KxSipNumberText.h"

#include "util/KxStreamTokenizer.h"

#include <charconv>

KxSipFault KxSipNumberText::sRead(KxSipLine& line, std::uint32_t most, std::uint32_t& number, const char* otherwise) {
    static constexpr KxCharSet kEnd(" \t\r\n;(");
    KxStreamTokenizer::sDiscardWhite(line);
    const std::string_view text = line.window();
    const char* const last = text.data() + text.size();
    std::uint32_t read = 0;
    const auto [end, error] = std::from_chars(text.data(), last, read);
    if (error != std::errc() || (end != last && !kEnd.contains(*end)) || read > most) {
        return KxSipFault(otherwise);
    }
    line.consume(static_cast<std::size_t>(end - text.data()));
    number = read;
    return {};
}
