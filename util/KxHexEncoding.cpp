#include "util/KxHexEncoding.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace {

constexpr std::string_view kDigits = "0123456789abcdef";

int valueOf(char digit) {
    const std::size_t value = kDigits.find(KxAscii::toLower(digit));
    return value == std::string_view::npos ? 0 : static_cast<int>(value);
}

using Bytes = unsigned char __attribute__((vector_size(16)));
using Pairs = unsigned short __attribute__((vector_size(16))); // which processors can shift, unlike bytes

/** The digit of each nibble. */
inline Bytes asDigits(Bytes nibbles) {
    using Signed = signed char __attribute__((vector_size(16)));
    const Signed isLetter = reinterpret_cast<Signed>(nibbles) > 9;
    return nibbles + '0' + (reinterpret_cast<Bytes>(isLetter) & ('a' - '0' - 10));
}

/** The digits of 16 bytes at once. */
inline void toHex16(const char* bytes, char* out) {
    Bytes in;
    std::memcpy(&in, bytes, sizeof in);
    const Bytes high = reinterpret_cast<Bytes>(reinterpret_cast<Pairs>(in) >> 4) & 15;
    const Bytes low = in & 15;
    const Bytes digits[2] = {
        asDigits(__builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23)),
        asDigits(__builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31))};
    std::memcpy(out, digits, sizeof digits);
}

/** Apart, so that the usual length needs no saved registers. */
[[gnu::noinline]] char* toHexEach(std::string_view bytes, char* out) {
    for (const char byte : bytes) {
        *out++ = kDigits[static_cast<unsigned char>(byte) >> 4];
        *out++ = kDigits[byte & 15];
    }
    return out;
}

} // namespace

char* KxHexEncoding::toHex(std::string_view bytes, char* out) {
    for (; bytes.size() >= sizeof(Bytes); bytes.remove_prefix(sizeof(Bytes))) {
        toHex16(bytes.data(), out);
        out += 2 * sizeof(Bytes);
    }
    return bytes.empty() ? out : toHexEach(bytes, out);
}

KxString KxHexEncoding::toHex(const KxHandle<KxByteArray>& bytes) {
    if (bytes.isNil()) {
        return KxString();
    }
    const std::size_t length = 2 * bytes->length();
    KxHandle<KxStringBuffer> text = KxStringBuffer::sCreate(nullptr, 0, length);
    toHex(bytes->view(), text->lockBuffer(length));
    text->releaseBuffer(length);
    return KxString(std::move(text));
}

char KxHexEncoding::fromHex(char high, char low) {
    return static_cast<char>(valueOf(high) << 4 | valueOf(low));
}
