#include "util/KxByteArrayInputStream.h"

#include <algorithm>
#include <utility>

namespace {

std::string_view part(const KxHandle<KxByteArray>& bytes, std::size_t offset, std::size_t length) {
    if (bytes.isNil()) {
        return {};
    }
    return bytes->view().substr(std::min(offset, bytes->length()), length);
}

} // namespace

KxByteArrayInputStream::KxByteArrayInputStream(KxHandle<KxByteArray> bytes)
    : KxByteArrayInputStream(std::move(bytes), 0, kUnlimited) {}

KxByteArrayInputStream::KxByteArrayInputStream(KxHandle<KxByteArray> bytes, std::size_t offset, std::size_t length)
    : KxByteArrayInputStream(part(bytes, offset, length)) {
    m_bytes = std::move(bytes);
}

std::size_t KxByteArrayInputStream::readSome(char*, std::size_t) {
    return 0; // the window holds all bytes
}
