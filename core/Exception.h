#pragma once

#include "core/CoreApi.h"

#include <exception>
#include <string>
#include <utility>

namespace Oskan {

/** Thrown by the core layer when it is used incorrectly. */
class KX_CORE_API Exception : public std::exception {
public:
    explicit Exception(std::string message) : m_message(std::move(message)) {}
    ~Exception() override;

    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

} // namespace Oskan
