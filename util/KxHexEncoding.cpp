#include "util/KxHexEncoding.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace {

constexpr std::string_view kDigits = "0123456789abcdef";

constexpr std::array<std::array<char, 2>, 256> kPairs = [] {
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte] = {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return pairs;
}();

constexpr std::array<unsigned char, 256> kValues = [] {
    std::array<unsigned char, 256> values{};
    for (unsigned char value = 0; value < kDigits.size(); ++value) {
        values[static_cast<unsigned char>(kDigits[value])] = value;
        values[static_cast<unsigned char>(KxAscii::toUpper(kDigits[value]))] = value;
    }
    return values;
}();

} // namespace

char* KxHexEncoding::toHex(std::string_view bytes, char* out) {
    for (const char byte : bytes) {
        std::memcpy(out, kPairs[static_cast<unsigned char>(byte)].data(), 2);
        out += 2;
    }
    return out;
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
    return static_cast<char>(kValues[static_cast<unsigned char>(high)] << 4 | kValues[static_cast<unsigned char>(low)]);
}
