#pragma once

#include "core/CoreApi.h"

#include <type_traits>
#include <typeinfo>

namespace Oskan {

/** Reports a checked downcast that failed, and aborts. */
class KX_CORE_API DynCastAssertNoT {
public:
    /** The object is of another type.
        @param text the cast as written, such as "OSKAN_DYNCAST_ASSERT(KxSipURL, pObject)". */
    [[noreturn, gnu::cold]] static void typeIdError(const char* text, const std::type_info& actual, const char* file,
                                                    int line) noexcept;
    /** There is no object. */
    [[noreturn, gnu::cold]] static void nullBaseError(const char* text, const char* file, int line) noexcept;
};

/** A checked downcast. An object of exactly the wanted type is found by comparing type identities; only one of a
    derived type costs a walk of its bases. */
template <class Target>
class DynCastAssert : public DynCastAssertNoT {
public:
    /** @return object as a Target, const if object is. Reports and aborts when it is none, or nil. */
    template <class Base>
    static auto* cast(Base* object, const char* text, const char* file, int line) {
        using Result = std::conditional_t<std::is_const_v<Base>, const Target, Target>;
        if (!object) [[unlikely]]
            nullBaseError(text, file, line);
        if constexpr (requires { static_cast<Result*>(object); }) {
            if (typeid(*object) == typeid(Target)) [[likely]]
                return static_cast<Result*>(object);
        }
        Result* const target = dynamic_cast<Result*>(object);
        if (!target) [[unlikely]]
            typeIdError(text, typeid(*object), file, line);
        return target;
    }
};

} // namespace Oskan

/** A Type* to the object that the pointer points to; anything else is a fault of the caller, reported with the cast's
    own text and fatal. */
#define OSKAN_DYNCAST_ASSERT(Type, pointer) \
    (::Oskan::DynCastAssert<Type>::cast((pointer), "OSKAN_DYNCAST_ASSERT(" #Type ", " #pointer ")", __FILE__, __LINE__))
