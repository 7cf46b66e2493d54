#pragma once

#include "core/CoreApi.h"

#include <exception>
#include <string>
#include <utility>

namespace Oskan {

/** What the core layer throws when it is used against its contract. */
class KX_CORE_API Exception : public std::exception {
public:
    explicit Exception(std::string message) : m_message(std::move(message)) {}
    ~Exception() override;

    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

} // namespace Oskan
