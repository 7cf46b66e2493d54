#pragma once

#include "util/KxSharedParameters.h"

#include <string_view>

/** When the parts of two URIs mean the same. [RFC 3261 19.1.4, RFC 3966 4] */
struct KxURIEquivalence {
    /** Users and passwords: with letter case, and without regard to whether a character is escaped that need not be. */
    static bool sOfUsers(std::string_view one, std::string_view other);
    /** A parameter that only one URL has is ignored, unless it has a meaning for where a request goes. */
    static bool sOfParameters(const KxSharedParameters& one, const KxSharedParameters& other);
    /** Every header must be in both. Their values compare with letter case: some mean it, and its class alone knows. */
    static bool sOfHeaders(const KxSharedParameters& one, const KxSharedParameters& other);
    /** Numbers, without regard to visual separators. */
    static bool sOfNumbers(std::string_view one, std::string_view other);
    /** Every parameter must be in both. */
    static bool sOfTelParameters(const KxSharedParameters& one, const KxSharedParameters& other);

    // ---- SIP URLs in the classic grammar ----

    /** One list may have one parameter more than the other. Each parameter of the shorter list except transport must
        have an equal one in the longer list, ignoring letter case. */
    static bool sMatchParameters(const KxSharedParameters& one, const KxSharedParameters& other);
    /** Both lists or none have headers, and each header of the shorter list has an equal one in the longer list. */
    static bool sMatchHeaders(const KxSharedParameters& one, const KxSharedParameters& other);
};
