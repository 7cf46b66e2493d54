#include "sipobject/auth/KxSipSha.h"

#include "util/KxException.h"

#include <new>
#include <openssl/evp.h>

static void require(bool isDone) {
    if (!isDone) {
        KxException::sThrow("The digest can't be computed");
    }
}

void KxSipSha::Release::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

KxSipSha::KxSipSha(Kind kind) : m_context(EVP_MD_CTX_new()) {
    if (!m_context) {
        throw std::bad_alloc();
    }
    const EVP_MD* const algorithm = kind == Kind::SHA256 ? EVP_sha256() : EVP_sha512_256();
    require(EVP_DigestInit_ex(m_context.get(), algorithm, nullptr) == 1);
}

void KxSipSha::update(std::string_view piece) {
    require(EVP_DigestUpdate(m_context.get(), piece.data(), piece.size()) == 1);
}

KxSipSha::Raw KxSipSha::finish() {
    Raw digest;
    require(EVP_DigestFinal_ex(m_context.get(), digest.bytes, nullptr) == 1);
    return digest;
}
