#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

struct evp_md_ctx_st;

/** A digest of the SHA-2 family with 256 bits, for digest authentication (RFC 7616), computed by libcrypto. Used as MD5
    is, by one thread at a time. Throws std::bad_alloc without memory, and KxException "The digest can't be computed" if
    libcrypto is set up without the algorithm. */
class KxSipSha {
public:
    struct Raw {
        unsigned char bytes[32];

        std::string_view view() const { return {reinterpret_cast<const char*>(bytes), sizeof bytes}; }
    };

    /** Adds a piece to the text of the digest. */
    void update(std::string_view piece);
    /** Returns the digest of all pieces. The object must not be used afterwards. */
    [[nodiscard]] Raw finish();

protected:
    enum class Kind { SHA256, SHA512_256 };
    explicit KxSipSha(Kind kind);

private:
    struct Release {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Release> m_context;
};

/** SHA-256 [RFC 6234]. */
struct KxSipSha256 : KxSipSha {
    KxSipSha256() : KxSipSha(Kind::SHA256) {}
};

/** SHA-512/256: SHA-512 with other start values, of which 256 bits are used [FIPS 180-4]. */
struct KxSipSha512_256 : KxSipSha {
    KxSipSha512_256() : KxSipSha(Kind::SHA512_256) {}
};
