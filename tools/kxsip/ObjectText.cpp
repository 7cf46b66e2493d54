#include "tools/kxsip/ObjectText.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

namespace {

struct Freer {
    void operator()(char* text) const { std::free(text); }
};

} // namespace

std::string classNameOf(const KxObject& object) {
    const char* const mangled = typeid(object).name();
    int status = 0;
    const std::unique_ptr<char, Freer> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status));
    return status == 0 ? name.get() : mangled;
}
