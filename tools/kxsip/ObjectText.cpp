#include "tools/kxsip/ObjectText.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>

namespace {

struct Freer {
    void operator()(char* text) const { std::free(text); }
};

std::string demangled(const char* mangled) {
    int status = 0;
    const std::unique_ptr<char, Freer> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status));
    return status == 0 ? name.get() : mangled;
}

} // namespace

const std::string& classNameOf(const KxObject& object) {
    static std::unordered_map<std::type_index, std::string> s_names;
    const std::type_info& type = typeid(object);
    const auto [known, isNew] = s_names.try_emplace(type);
    if (isNew) {
        known->second = demangled(type.name());
    }
    return known->second;
}
