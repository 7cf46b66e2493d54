#pragma once

#include "sipheaders/HeadersApi.h"

#include <optional>
#include <string>
#include <string_view>

/** Bytes as text of letters, digits, "-" and "_", as in a PASSporT. [RFC 4648 5, without padding as in RFC 7515 2] */
class KX_HEADERS_API KxSipBase64Url {
public:
    KxSipBase64Url() = delete;

    static std::string sEncode(std::string_view bytes);
    /** Also reads "+" and "/" in place of "-" and "_", and padding with "=". None for other text. */
    static std::optional<std::string> sDecode(std::string_view text);
};
