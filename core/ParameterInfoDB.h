#pragma once

#include "core/CoreApi.h"

#include <map>
#include <string>
#include <string_view>

namespace Oskan {

/** The registration of one configuration parameter. */
struct ParameterInfo {
    enum class Type { Boolean, Integer, Text };

    std::string name;
    Type type = Type::Text;
    std::string defaultValue;
    std::string description;
};

/** The configuration parameters that the process's libraries have registered. Usable from any thread, from static
    initialisers to static destructors. */
class KX_CORE_API ParameterInfoDB {
public:
    static const ParameterInfoDB& getInstance();
    static ParameterInfoDB& getNonConstInstance();

    /** Registers a parameter for as long as the process lives.
        @throws Exception when the name is empty or already registered. */
    void addParameter(std::string_view name, ParameterInfo::Type type, std::string_view defaultValue,
                      std::string_view description);

    /** The parameter of that name, nil when there is none. The pointer stays valid. */
    const ParameterInfo* find(std::string_view name) const;

    ParameterInfoDB(const ParameterInfoDB&) = delete;
    ParameterInfoDB& operator=(const ParameterInfoDB&) = delete;

private:
    ParameterInfoDB() = default;

    std::map<std::string, ParameterInfo, std::less<>> m_byName;
};

} // namespace Oskan
