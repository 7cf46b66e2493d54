#include "sipobject/headers/KxSipQValue.h"

#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipDecimal.h"

static constexpr unsigned kPlaces = 3;

std::optional<std::uint32_t> KxSipQValue::sRead(std::string_view text) {
    const bool hasPoint = text.size() > 1 && text.size() <= 2 + kPlaces && text[1] == '.';
    if (text.size() != 1 && !hasPoint) {
        return std::nullopt;
    }
    const std::optional<std::uint64_t> number = KxSipDecimal::sRead(text, kPlaces);
    return number && *number <= kMost ? std::optional(static_cast<std::uint32_t>(*number)) : std::nullopt;
}

std::optional<std::uint32_t> KxSipQValue::sOf(const KxSharedParameters& parameters) {
    const KxString* const text = parameters.findValue("q");
    return text == nullptr ? kMost : sRead(*text);
}

KxString KxSipQValue::sWrite(std::uint32_t thousandths) {
    if (thousandths > kMost) {
        KxSipParseError::sThrow("Invalid q value");
    }
    return KxSipDecimal::sWrite(thousandths, kPlaces);
}
