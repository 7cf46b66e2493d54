#include "core/SingletonRegistry.h"

#include "core/Exception.h"

#include <map>
#include <mutex>
#include <string>
#include <typeindex>

namespace Oskan {

namespace {

struct Singleton {
    void* object;
    std::type_index type;
};

struct Singletons {
    std::recursive_mutex mutex; ///< Recursive, because a factory may ask for other objects.
    std::map<std::string, Singleton, std::less<>> byName;
};

Singletons& singletons() {
    static Singletons& all = *new Singletons;
    return all;
}

} // namespace

SingletonRegistry& SingletonRegistry::getInstance() {
    static SingletonRegistry registry;
    return registry;
}

void* SingletonRegistry::getOrCreateAny(std::string_view name, const std::type_info& type,
                                        const std::function<void*()>& factory) {
    Singletons& all = singletons();
    const std::lock_guard lock(all.mutex);
    auto found = all.byName.find(name);
    if (found == all.byName.end()) {
        void* const object = factory();
        found = all.byName.try_emplace(std::string(name), Singleton{object, type}).first;
    }
    if (found->second.type != std::type_index(type)) {
        throw Exception("singleton \"" + std::string(name) + "\" is of another type");
    }
    return found->second.object;
}

} // namespace Oskan
