#pragma once

#include "core/CoreApi.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Oskan {

/** The process's configuration: a value by parameter name, set by the host at any time and read afresh each time.
    A parameter that the host has not set has the default it was registered with in ParameterInfoDB.
    Usable from any thread, from static initialisers to static destructors. */
class KX_CORE_API GlobalConfig {
public:
    static GlobalConfig& getInstance();

    /** Sets a parameter's value, registered or not; holds from the next read on.
        @param text "true" or "false", in either letter case, for a boolean. */
    void set(std::string_view name, std::string_view text);
    /** Goes back to the registered default. */
    void unset(std::string_view name);

    /** Reads a boolean. False when the parameter is unknown or its text is no boolean; value is left alone then. */
    bool getBool(std::string_view name, bool& value) const;

    GlobalConfig(const GlobalConfig&) = delete;
    GlobalConfig& operator=(const GlobalConfig&) = delete;

private:
    GlobalConfig() = default;

    std::optional<std::string> textOf(std::string_view name) const;

    std::map<std::string, std::string, std::less<>> m_texts;
};

} // namespace Oskan
