#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

struct z_stream_s;

/** Unpacks gzip data piece by piece, with any number of members. Holds the packed bytes that were fed last. [RFC 1952]
    */
class Gunzip {
public:
    /** Number of bytes at the beginning of a file that sBegins looks at. */
    static constexpr std::size_t kMagicLength = 3;
    /** Whether the bytes begin like gzip data, as far as they go. */
    static bool sBegins(std::string_view bytes);

    Gunzip();

    /** Gives packed bytes. To be called when `unpack` returned false. */
    void feed(std::string_view packed);
    /** Appends at most 64 KiB of unpacked bytes. Returns false if there are none before more is fed. */
    bool unpack(std::string& to);
    /** No more is fed. */
    void finish();

    /** Returns what is wrong with the data, empty if nothing is. */
    const std::string& damage() const { return m_damage; }

private:
    struct Closer {
        void operator()(z_stream_s* stream) const;
    };

    void beginMember();
    void takeResult(int result);

    std::unique_ptr<z_stream_s, Closer> m_stream;
    std::string m_packed;
    std::size_t m_used = 0; ///< Bytes of m_packed that were unpacked.
    bool m_inMember = false;
    bool m_hasMember = false; ///< A member has ended.
    std::string m_damage;
};
