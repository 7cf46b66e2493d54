#pragma once

#include "core/CoreApi.h"

#include <map>
#include <string>
#include <string_view>

namespace Oskan {

/** The process's configuration: the values of parameters, by name. The host may set them at any time; every use reads
    the current value. A parameter that the host has not set has its default in ParameterInfoDB.
    Usable from any thread, from static initialisers to static destructors. */
class KX_CORE_API GlobalConfig {
public:
    static GlobalConfig& getInstance();

    /** Sets the value of a parameter, registered or not. It applies from the next read.
        @param text "true" or "false", in either letter case, for a boolean. */
    void set(std::string_view name, std::string_view text);
    /** Goes back to the registered default. */
    void unset(std::string_view name);

    /** Reads a boolean. Returns false, and leaves value unchanged, when the parameter is unknown or its text is not a
        boolean. */
    bool getBool(std::string_view name, bool& value) const;

    GlobalConfig(const GlobalConfig&) = delete;
    GlobalConfig& operator=(const GlobalConfig&) = delete;

private:
    GlobalConfig() = default;

    /** Empty for an unknown parameter. */
    std::string textOf(std::string_view name) const;

    std::map<std::string, std::string, std::less<>> m_texts;
};

} // namespace Oskan
