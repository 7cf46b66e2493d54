#include "util/KxStreamTokenizer.h"

#include "util/KxScannedText.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr KxCharSet kLineEnd("\n");
constexpr KxCharSet kWordEnd(" \t\r\n");

/** Consumes the rest of the line and its line end; returns the line without the line end. */
std::string_view takeRestOfLine(KxInputStream& in, KxScannedText& scanned) {
    KxStreamTokenizer::sDiscardWhite(in);
    std::string_view line = scanned.until(in, kLineEnd);
    in.read();
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

bool copyOut(std::string_view text, char* buffer, std::size_t size) {
    if (size == 0) {
        return false;
    }
    const std::size_t kept = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), kept);
    buffer[kept] = '\0';
    return kept == text.size();
}

/** Copies the next token without consuming it; sets `at` to the place in the window after the text that was copied. */
bool copyToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size, std::size_t& at) {
    const auto next = [&] {
        return at < in.window().size() || in.extendWindow() ? static_cast<unsigned char>(in.window()[at]) : -1;
    };
    int c = next();
    for (; c == ' ' || c == '\t'; c = next()) {
        ++at;
    }
    if (size == 0) {
        return false;
    }
    const bool atEnd = c < 0;
    std::size_t length = 0;
    for (; c >= 0 && !delimiters.contains(static_cast<char>(c)) && length + 1 < size; c = next()) {
        buffer[length++] = static_cast<char>(c);
        ++at;
    }
    buffer[length] = '\0';
    return !atEnd && (c < 0 || delimiters.contains(static_cast<char>(c)));
}

} // namespace

void KxStreamTokenizer::sDiscardLine(KxInputStream& in) {
    for (int c = in.read(); c >= 0 && c != '\n'; c = in.read()) {
    }
}

KxString KxStreamTokenizer::sGetLine(KxInputStream& in) {
    KxScannedText scanned;
    return KxString(takeRestOfLine(in, scanned));
}

bool KxStreamTokenizer::sGetLine(KxInputStream& in, char* buffer, std::size_t size) {
    if (!in.fill()) {
        copyOut("", buffer, size);
        return false;
    }
    KxScannedText scanned;
    return copyOut(takeRestOfLine(in, scanned), buffer, size);
}

KxString KxStreamTokenizer::sGetToken(KxInputStream& in, const KxCharSet& delimiters) {
    sDiscardWhite(in);
    KxScannedText scanned;
    return KxString(scanned.until(in, delimiters));
}

bool KxStreamTokenizer::sGetToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size) {
    std::size_t at = 0;
    const bool fits = copyToken(in, delimiters, buffer, size, at);
    in.consume(at);
    return fits;
}

bool KxStreamTokenizer::sPeekToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size) {
    std::size_t at = 0;
    return copyToken(in, delimiters, buffer, size, at);
}

KxString KxStreamTokenizer::sGetQuote(KxInputStream& in) {
    if (sDiscardWhite(in) != '"') {
        return KxString("");
    }
    in.read();
    KxHandle<KxStringBuffer> text = KxStringBuffer::sCreate("", 0, 64);
    for (int c = in.read(); c >= 0 && c != '"'; c = in.read()) {
        if (c == '\\' && in.fill()) {
            c = in.read();
        }
        const char byte = static_cast<char>(c);
        text->append(&byte, 1);
    }
    return KxString(text);
}

KxInputStream& operator>>(KxInputStream& in, KxString& word) {
    word = KxStreamTokenizer::sGetToken(in, kWordEnd);
    return in;
}
