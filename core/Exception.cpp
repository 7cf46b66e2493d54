#include "core/Exception.h"

namespace Oskan {

Exception::~Exception() = default;

} // namespace Oskan
