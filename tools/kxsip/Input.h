#pragma once

#include "tools/kxsip/Gunzip.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/** The bytes of a file as they arrive; of a file that is packed by gzip, the unpacked ones. A live input (a pipe, a
    terminal) gives them at once; before it waits for more, standard output is flushed. An Interrupt ends the input. */
class Input {
public:
    enum class Packed { Unpack, AsIs };

    /** Opens the file; "-" is standard input. A FIFO need not have a writer yet. Throws std::system_error. */
    explicit Input(const std::string& name, Packed packed = Packed::Unpack);
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
    /** Whether more bytes may come at any time. */
    bool isLive() const { return !m_fileSize.has_value(); }
    /** Returns the number of all bytes; nothing if it is not known, for a live input and a packed file. */
    std::optional<std::size_t> size() const { return m_gunzip == nullptr ? m_fileSize : std::nullopt; }
    /** Returns the number of bytes that were dropped. */
    std::size_t position() const { return m_position; }
    /** Returns what is wrong with a packed file after the bytes that were unpacked, empty if nothing is. */
    const std::string& damage() const;

    /** How much of the file was read; the size is not known of a live input. */
    struct Progress {
        std::size_t done;
        std::optional<std::size_t> size;
    };
    Progress progress() const { return {m_gunzip == nullptr ? m_position : m_fileRead, m_fileSize}; }

private:
    std::string_view read();
    void recognise();
    bool unpack();
    std::size_t arrived() const;

    std::string m_name;
    std::string m_bytes;
    std::size_t m_begin = 0; ///< Number of bytes of m_bytes that were dropped.
    std::size_t m_position = 0;
    int m_descriptor = -1;
    std::optional<std::size_t> m_fileSize;
    std::size_t m_fileRead = 0;
    std::string m_block; ///< Has what was read last.
    bool m_isFileEnded = false;
    bool m_isKnown;                   ///< It is known whether the file is packed.
    std::unique_ptr<Gunzip> m_gunzip; ///< Null if the file is not packed.
    bool m_isEnded = false;
};
