#include "core/FallibleBase.h"

#include "core/Assertion.h"

namespace Oskan {

void FallibleBase::assertUsedInInvalidStateErr() noexcept {
    Assertion::sFail("Fallible used in invalid state", __FILE__, __LINE__);
}

} // namespace Oskan
