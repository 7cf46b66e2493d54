#include "tools/kxsip/Printable.h"

namespace {

/** Whether the byte is a C0 control, DEL, or the second byte of a C1 control in UTF-8, after 0xC2. */
bool isControl(unsigned char before, unsigned char byte) {
    return byte < 0x20 || byte == 0x7F || (before == 0xC2 && byte >= 0x80 && byte < 0xA0);
}

} // namespace

std::string printable(std::string_view text) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string result;
    unsigned char before = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isControl(before, byte)) {
            result.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
        } else {
            result.append(1, c);
        }
        before = byte;
    }
    return result;
}
