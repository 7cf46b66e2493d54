#include "core/DynCastAssertNoT.h"

#include "core/Assertion.h"

#include <cstdlib>
#include <cxxabi.h>
#include <string>

namespace Oskan {

namespace {

std::string nameOf(const std::type_info& type) {
    int status = 0;
    char* const demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    std::string name = status == 0 ? demangled : type.name();
    std::free(demangled);
    return name;
}

} // namespace

void DynCastAssertNoT::typeIdError(const char* text, const std::type_info& actual, const char* file,
                                   int line) noexcept {
    Assertion::sFail((std::string(text) + ", object is of type " + nameOf(actual)).c_str(), file, line);
}

void DynCastAssertNoT::nullBaseError(const char* text, const char* file, int line) noexcept {
    Assertion::sFail((std::string(text) + ", object is null").c_str(), file, line);
}

} // namespace Oskan
