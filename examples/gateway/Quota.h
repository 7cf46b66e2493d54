#pragma once

#include <cstddef>
#include <memory>

/** How many of something may be there at once. Each holds a place for as long as it lives. Used by one thread. */
class Quota {
public:
    /** Given back when its last copy goes; every copy counts. */
    using Place = std::shared_ptr<const std::size_t>;

    explicit Quota(std::size_t places) : m_places(std::make_shared<const std::size_t>(places)) {}

    bool isFull() const { return static_cast<std::size_t>(m_places.use_count() - 1) >= *m_places; }
    /** Also of a full one: whether to ask first is for the caller to know. */
    Place take() const { return m_places; }

private:
    std::shared_ptr<const std::size_t> m_places; // the quota's own copy holds no place
};
