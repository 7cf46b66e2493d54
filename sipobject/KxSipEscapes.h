#pragma once

#include "util/KxCharSet.h"
#include "util/KxString.h"

#include <string>
#include <string_view>

class KxOutputStream;

/** The escapes of URLs: "%" and two hexadecimal digits. [RFC 3261 19.1.2, 25.1] */
struct KxSipEscapes {
    /** The text without escapes. A "%" that two digits do not follow stays. */
    static std::string sDecoded(std::string_view text);
    /** The same text for all that are equivalent: escapes of reserved characters and of "%" stay, with upper-case
        digits; others are resolved. [RFC 3261 19.1.4] */
    static std::string sNormal(std::string_view text);
    /** Writes the text. Escapes stay; characters that are not in the set, and a "%" that is no escape, are escaped. */
    static void sWrite(KxOutputStream& out, std::string_view text, const KxCharSet& allowed);
};
