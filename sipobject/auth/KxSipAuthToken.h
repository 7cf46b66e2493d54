#pragma once

#include "util/KxCharSet.h"

#include <algorithm>
#include <string_view>

/** The tokens of authentication headers: schemes, names of properties, values without quotes.
    token = 1*(alphanum / "-" / "." / "!" / "%" / "*" / "_" / "+" / "`" / "'" / "~")    [RFC 3261 25.1] */
class KxSipAuthToken {
public:
    KxSipAuthToken() = delete;

    static bool sIs(std::string_view text) {
        return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return kCharacters.contains(c); });
    }

private:
    static constexpr KxCharSet kCharacters{"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.!%*_+`'~"};
};
