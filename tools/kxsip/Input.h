#pragma once

#include "tools/kxsip/InputFile.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** The bytes of a file as they arrive. A live input (a pipe, a terminal) gives them at once; before it waits for more,
    standard output is flushed. An Interrupt ends the input. */
class Input {
public:
    /** Opens the file; "-" is standard input. A FIFO need not have a writer yet. Throws std::system_error. */
    explicit Input(const std::string& name);
    /** Gives the bytes of a file that was read. */
    explicit Input(const InputFile& file);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    const std::string& name() const { return m_name; }
    /** The bytes that have arrived and were not dropped. Valid until the next call of more. */
    std::string_view bytes() const { return std::string_view(m_bytes).substr(m_begin); }
    /** Drops bytes at the beginning, not more than there are. */
    void drop(std::size_t count);
    /** Waits for more bytes. Returns false if no more will come. Throws std::system_error. */
    bool more();

    /** Whether it is known that no more bytes will come. */
    bool isEnded() const { return m_isEnded; }
    /** Whether more bytes may come at any time, so that the number of all is not known. */
    bool isLive() const { return !m_size.has_value(); }
    /** Returns the number of all bytes, nothing for a live input. */
    std::optional<std::size_t> size() const { return m_size; }
    /** Returns the number of bytes that were dropped. */
    std::size_t position() const { return m_position; }

private:
    std::size_t arrived() const;

    std::string m_name;
    std::string m_bytes;
    std::size_t m_begin = 0; ///< Number of bytes of m_bytes that were dropped.
    std::size_t m_position = 0;
    int m_descriptor = -1;
    std::optional<std::size_t> m_size;
    bool m_isEnded = false;
};
