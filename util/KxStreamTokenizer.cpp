#include "util/KxStreamTokenizer.h"

#include "util/KxScannedText.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr KxCharSet kLineEnd("\n");
constexpr KxCharSet kWordEnd(" \t\r\n");

/** The rest of the line without its line end, both consumed. */
std::string_view takeLine(KxInputStream& in, KxScannedText& scanned) {
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

} // namespace

void KxStreamTokenizer::sDiscardLine(KxInputStream& in) {
    int c = in.read();
    while (c >= 0 && c != '\n') {
        c = in.read();
    }
}

KxString KxStreamTokenizer::sGetLine(KxInputStream& in) {
    KxScannedText scanned;
    return KxString(takeLine(in, scanned));
}

bool KxStreamTokenizer::sGetLine(KxInputStream& in, char* buffer, std::size_t size) {
    if (!in.fill()) {
        return false;
    }
    KxScannedText scanned;
    return copyOut(takeLine(in, scanned), buffer, size);
}

KxString KxStreamTokenizer::sGetToken(KxInputStream& in, const KxCharSet& delimiters) {
    sDiscardWhite(in);
    KxScannedText scanned;
    return KxString(scanned.until(in, delimiters));
}

bool KxStreamTokenizer::sGetToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size) {
    int c = sDiscardWhite(in);
    if (c < 0 || size == 0) {
        return false;
    }
    std::size_t length = 0;
    for (; c >= 0 && !delimiters.contains(static_cast<char>(c)); c = in.peek()) {
        if (length + 1 == size) {
            buffer[length] = '\0';
            return false;
        }
        buffer[length++] = static_cast<char>(c);
        in.consume(1);
    }
    buffer[length] = '\0';
    return true;
}

bool KxStreamTokenizer::sPeekToken(KxInputStream& in, const KxCharSet& delimiters, char* buffer, std::size_t size) {
    in.mark();
    const bool fits = sGetToken(in, delimiters, buffer, size);
    in.reset();
    return fits;
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
