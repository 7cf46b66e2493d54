#pragma once

#include "core/DynCastAssertNoT.h"

#include <type_traits>
#include <typeinfo>

namespace Oskan {

/** A checked downcast. For an object of exactly the target type it compares type identities; only an object of a
    derived type costs a dynamic_cast. */
template <class Target>
class DynCastAssert : public DynCastAssertNoT {
public:
    /** @return the object as a Target, const if the object is const. Reports and aborts when the object is nil or is
        not a Target. */
    template <class Base>
    static auto* cast(Base* object, const char* text, const char* file, int line) {
        using Result = std::conditional_t<std::is_const_v<Base>, const Target, Target>;
        if (!object) [[unlikely]] {
            nullBaseError(text, file, line);
        }
        if constexpr (requires { static_cast<Result*>(object); }) {
            if (typeid(*object) == typeid(Target)) [[likely]] {
                return static_cast<Result*>(object);
            }
        }
        Result* const target = dynamic_cast<Result*>(object);
        if (!target) [[unlikely]] {
            typeIdError(text, typeid(*object), file, line);
        }
        return target;
    }
};

} // namespace Oskan

/** Returns the pointer as a Type*. If the pointer is nil or the object is not a Type, that is a fault of the caller:
    it is reported with the text of the cast, and the process aborts. */
#define OSKAN_DYNCAST_ASSERT(Type, pointer) \
    (::Oskan::DynCastAssert<Type>::cast((pointer), "OSKAN_DYNCAST_ASSERT(" #Type ", " #pointer ")", __FILE__, __LINE__))
