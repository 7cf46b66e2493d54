#include "sipobject/KxSipEscapes.h"

#include "util/KxHexEncoding.h"
#include "util/KxOutputStream.h"

namespace {

constexpr KxCharSet kHexDigits("0123456789abcdefABCDEF");
constexpr KxCharSet kStaysEscaped(";/?:@&=+$,%"); // reserved, and "%"

bool isEscape(std::string_view text, std::size_t at) {
    return text[at] == '%' && text.size() - at > 2 && kHexDigits.contains(text[at + 1]) &&
           kHexDigits.contains(text[at + 2]);
}

/** Calls `take` for each character, with whether it was escaped. */
template <class Take>
void forEach(std::string_view text, Take take) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escaped = isEscape(text, i);
        take(escaped ? KxHexEncoding::fromHex(text[i + 1], text[i + 2]) : text[i], escaped);
        i += escaped ? 2 : 0;
    }
}

struct Escape {
    explicit Escape(char c)
        : text{'%', kDigits[static_cast<unsigned char>(c) >> 4], kDigits[static_cast<unsigned char>(c) & 15]} {}
    std::string_view view() const { return {text, sizeof text}; }

    static constexpr char kDigits[] = "0123456789ABCDEF";
    char text[3];
};

} // namespace

std::string KxSipEscapes::sDecoded(std::string_view text) {
    std::string decoded;
    forEach(text, [&decoded](char c, bool) { decoded += c; });
    return decoded;
}

std::string KxSipEscapes::sNormal(std::string_view text) {
    std::string normal;
    forEach(text, [&normal](char c, bool escaped) {
        if (escaped && kStaysEscaped.contains(c)) {
            normal += Escape(c).view();
        } else {
            normal += c;
        }
    });
    return normal;
}

void KxSipEscapes::sWrite(KxOutputStream& out, std::string_view text, const KxCharSet& allowed) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (allowed.contains(text[i]) || isEscape(text, i)) {
            out.write(text[i]);
        } else {
            out.write(Escape(text[i]).view());
        }
    }
}
