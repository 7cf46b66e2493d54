#pragma once

#include "core/CoreApi.h"

#include <typeinfo>

namespace Oskan {

/** Reports a checked downcast that failed, and aborts. */
class KX_CORE_API DynCastAssertNoT {
public:
    /** The object is of another type.
        @param text the cast as written, such as "OSKAN_DYNCAST_ASSERT(KxSipURL, pObject)". */
    [[noreturn, gnu::cold]] static void typeIdError(const char* text, const std::type_info& actual, const char* file,
                                                    int line) noexcept;
    /** The pointer is nil. */
    [[noreturn, gnu::cold]] static void nullBaseError(const char* text, const char* file, int line) noexcept;
};

} // namespace Oskan
