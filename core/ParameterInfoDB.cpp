#include "core/ParameterInfoDB.h"

#include "core/Exception.h"
#include "core/ForkLock.h"

#include <mutex>

namespace Oskan {

namespace {

constinit std::mutex s_mutex; ///< There is one database.
const ForkLockOf<s_mutex> s_forkLock{ForkLock::Order::Parameters};

} // namespace

const ParameterInfoDB& ParameterInfoDB::getInstance() {
    return getNonConstInstance();
}

ParameterInfoDB& ParameterInfoDB::getNonConstInstance() {
    static ParameterInfoDB& instance = *new ParameterInfoDB;
    return instance;
}

void ParameterInfoDB::addParameter(std::string_view name, ParameterInfo::Type type, std::string_view defaultValue,
                                   std::string_view description) {
    if (name.empty()) {
        throw Exception("parameter without a name");
    }
    const std::lock_guard lock(s_mutex);
    ParameterInfo info{std::string(name), type, std::string(defaultValue), std::string(description)};
    if (!m_byName.try_emplace(std::string(name), std::move(info)).second) {
        throw Exception("parameter \"" + std::string(name) + "\" is registered twice");
    }
}

const ParameterInfo* ParameterInfoDB::find(std::string_view name) const {
    const std::lock_guard lock(s_mutex);
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : &found->second;
}

} // namespace Oskan
