#pragma once

#include <cstddef>
#include <memory>

/** Limits the number of objects of some kind. Each object holds a place as long as it lives. Used by one thread. */
class Quota {
public:
    /** Freed when it is destroyed. Each copy counts as a further place. */
    using Place = std::shared_ptr<const std::size_t>;

    explicit Quota(std::size_t places) : m_places(std::make_shared<const std::size_t>(places)) {}

    bool isFull() const { return static_cast<std::size_t>(m_places.use_count() - 1) >= *m_places; }
    /** Returns a place, even if the quota is full: the caller decides whether to check isFull() first. */
    Place take() const { return m_places; }

private:
    std::shared_ptr<const std::size_t> m_places; // the quota's own copy does not count
};
