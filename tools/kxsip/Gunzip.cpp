#include "tools/kxsip/Gunzip.h"

#include <algorithm>
#include <new>

#include <zlib.h>

namespace {

constexpr std::string_view kMagic("\x1F\x8B\x08", Gunzip::kMagicLength);
constexpr std::size_t kPiece = 65536;

} // namespace

bool Gunzip::sBegins(std::string_view bytes) {
    return bytes.substr(0, kMagicLength) == kMagic.substr(0, bytes.size());
}

void Gunzip::Closer::operator()(z_stream_s* stream) const {
    inflateEnd(stream);
    delete stream;
}

Gunzip::Gunzip() : m_stream(new z_stream{}) {
    constexpr int kGzipWithLargestWindow = 16 + MAX_WBITS;
    if (inflateInit2(m_stream.get(), kGzipWithLargestWindow) != Z_OK) {
        throw std::bad_alloc();
    }
}

void Gunzip::feed(std::string_view packed) {
    m_packed = packed;
    m_used = 0;
}

bool Gunzip::unpack(std::string& to) {
    const std::size_t before = to.size();
    while (m_damage.empty() && to.size() == before) {
        beginMember();
        if (!m_inMember) {
            break;
        }
        to.resize(before + kPiece);
        m_stream->next_in = reinterpret_cast<Bytef*>(m_packed.data() + m_used);
        m_stream->avail_in = static_cast<uInt>(m_packed.size() - m_used);
        m_stream->next_out = reinterpret_cast<Bytef*>(to.data() + before);
        m_stream->avail_out = kPiece;
        const int result = inflate(m_stream.get(), Z_NO_FLUSH);
        m_used = m_packed.size() - m_stream->avail_in;
        to.resize(before + kPiece - m_stream->avail_out);
        takeResult(result);
        if (result == Z_BUF_ERROR) { // nothing can be done without more
            break;
        }
    }
    return to.size() > before;
}

/** After a member there may be zeros, to fill a block of a tape or disk, and another member. */
void Gunzip::beginMember() {
    if (m_inMember) {
        return;
    }
    if (m_hasMember) {
        m_used = std::min(m_packed.find_first_not_of('\0', m_used), m_packed.size());
    }
    if (m_used < m_packed.size()) {
        inflateReset(m_stream.get());
        m_inMember = true;
    }
}

void Gunzip::takeResult(int result) {
    if (result == Z_STREAM_END) {
        m_inMember = false;
        m_hasMember = true;
    } else if (result != Z_OK && result != Z_BUF_ERROR) {
        const char* const why = m_stream->msg;
        m_damage = "the gzip data is damaged (" + std::string(why == nullptr ? "unknown" : why) + ")";
    }
}

void Gunzip::finish() {
    if (m_inMember && m_damage.empty()) {
        m_damage = "the gzip data is cut off";
    }
}
