#include "sipheaders/KxSipQValue.h"

#include "sipheaders/KxSipParameterValue.h"
#include "sipobject/KxSipParseError.h"
#include "util/KxAscii.h"

#include <algorithm>
#include <string>

std::optional<std::uint32_t> KxSipQValue::sThousandths(const KxString& value) {
    const KxString text = KxSipParameterValue::sText(value);
    const std::string_view whole = text.view().substr(0, text.view().find('.'));
    std::string digits(text.view().substr(std::min(whole.size() + 1, text.length())));
    if ((whole.empty() ? digits.empty() : whole != "0" && whole != "1") || digits.size() > 3) {
        return std::nullopt;
    }
    digits.append(3 - digits.size(), '0');
    std::uint32_t thousandths = whole == "1" ? 1000 : 0;
    for (std::uint32_t weight = 100; const char digit : digits) {
        if (!KxAscii::isDigit(digit)) {
            return std::nullopt;
        }
        thousandths += weight * static_cast<std::uint32_t>(digit - '0');
        weight /= 10;
    }
    return thousandths <= 1000 ? std::optional(thousandths) : std::nullopt;
}

KxString KxSipQValue::sOf(std::uint32_t thousandths) {
    if (thousandths > 1000) {
        KxSipParseError::sThrow("Preference is larger than 1");
    }
    if (thousandths == 1000) {
        return KxString("1");
    }
    std::string text = "0." + std::to_string(1000 + thousandths).substr(1);
    text.erase(text.find_last_not_of('0') + 1);
    return KxString(text.back() == '.' ? "0" : text.c_str());
}
