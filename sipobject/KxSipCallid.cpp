#include "sipobject/KxSipCallid.h"

#include "util/KxInetAddress.h"
#include "util/UUID.h"

namespace {

constexpr std::size_t kUuidLength = 36;
constexpr std::size_t kCapacity = 128;

const KxString& localHostName() {
    static const KxString* const name = new KxString(KxInetAddress::sGetLocalHostName()); // never freed
    return *name;
}

} // namespace

KxSipCallid::KxSipCallid() : KxSipCallid(nullptr) {}

KxSipCallid::KxSipCallid(const char* host) {
    reGenerate(host);
}

KxSipCallid* KxSipCallid::clone() const {
    return new KxSipCallid(*this);
}

void KxSipCallid::reGenerate(const char* host) {
    const KxHandle<KxStringBuffer> text = KxStringBuffer::sCreate(nullptr, kUuidLength, kCapacity);
    UUID::uuid_create_string(text->lockBuffer(kUuidLength));
    text->releaseBuffer(kUuidLength);
    const std::string_view at = host != nullptr ? std::string_view(host) : localHostName().view();
    text->append("@", 1);
    text->append(at.data(), at.size());
    m_value = KxString(text);
}
