#include "core/GlobalConfig.h"

#include "core/ForkLock.h"
#include "core/ParameterInfoDB.h"

#include <algorithm>
#include <mutex>

namespace Oskan {

namespace {

constinit std::mutex s_mutex; ///< There is one configuration.
const ForkLockOf<s_mutex> s_forkLock{ForkLock::Order::Configuration};

bool equalsNoCase(std::string_view text, std::string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : static_cast<int>(a)) == b; });
}

} // namespace

GlobalConfig& GlobalConfig::getInstance() {
    static GlobalConfig& instance = *new GlobalConfig;
    return instance;
}

void GlobalConfig::set(std::string_view name, std::string_view text) {
    const std::lock_guard lock(s_mutex);
    m_texts.insert_or_assign(std::string(name), std::string(text));
}

void GlobalConfig::unset(std::string_view name) {
    const std::lock_guard lock(s_mutex);
    if (const auto found = m_texts.find(name); found != m_texts.end()) {
        m_texts.erase(found);
    }
}

bool GlobalConfig::getBool(std::string_view name, bool& value) const {
    const std::string text = textOf(name);
    const bool isTrue = equalsNoCase(text, "true");
    if (!isTrue && !equalsNoCase(text, "false")) {
        return false;
    }
    value = isTrue;
    return true;
}

std::string GlobalConfig::textOf(std::string_view name) const {
    {
        const std::lock_guard lock(s_mutex);
        if (const auto found = m_texts.find(name); found != m_texts.end()) {
            return found->second;
        }
    }
    const ParameterInfo* const info = ParameterInfoDB::getInstance().find(name);
    return info == nullptr ? "" : info->defaultValue;
}

} // namespace Oskan
