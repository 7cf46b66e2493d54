#pragma once

#include "core/CoreApi.h"

#include <functional>
#include <string_view>
#include <typeinfo>

namespace Oskan {

/** The singletons of the process, by name. Usable from any thread and from static initialisers. The objects live as
    long as the process. They are not destroyed at its end, because other code may still use them then. */
class KX_CORE_API SingletonRegistry {
public:
    static SingletonRegistry& getInstance();

    /** The object of that name, created by the factory when there is none. Two threads get the same object.
        @param factory is called without arguments and returns a std::unique_ptr<T>. It may ask the registry for other
        names. An exception from the factory is passed on, and the next call tries again.
        @throws Exception when the object of that name is of another type. */
    template <class T, class Factory>
    T* getOrCreate(std::string_view name, Factory&& factory) {
        return static_cast<T*>(getOrCreateAny(name, typeid(T), [&]() -> void* { return factory().release(); }));
    }

    SingletonRegistry(const SingletonRegistry&) = delete;
    SingletonRegistry& operator=(const SingletonRegistry&) = delete;

private:
    SingletonRegistry() = default;

    void* getOrCreateAny(std::string_view name, const std::type_info& type, const std::function<void*()>& factory);
};

} // namespace Oskan
