#include "tools/kxsip/JsonWriter.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <algorithm>
#include <cstring>

namespace {

/** Returns the number of bytes of the first character, 0 if it is not UTF-8. */
std::size_t characterLength(std::string_view text) {
    rapidjson::MemoryStream in(text.data(), text.size());
    unsigned code = 0;
    return rapidjson::UTF8<>::Decode(in, &code) ? in.Tell() : 0;
}

constexpr std::uint64_t kOnes = 0x0101010101010101U;
constexpr std::uint64_t kHighBits = kOnes * 0x80;

/** Not 0 if one of the bytes is 0. */
constexpr std::uint64_t zeros(std::uint64_t word) {
    return (word - kOnes) & ~word & kHighBits;
}

/** Whether `faultOf` returns 0 for all words of eight characters; the last one is filled up with blanks. */
template <class FaultOf>
bool allWords(std::string_view text, FaultOf faultOf) {
    std::uint64_t word = 0;
    while (text.size() >= sizeof word) {
        std::memcpy(&word, text.data(), sizeof word);
        if (faultOf(word) != 0) {
            return false;
        }
        text.remove_prefix(sizeof word);
    }
    word = kOnes * ' ';
    std::memcpy(&word, text.data(), text.size());
    return faultOf(word) == 0;
}

} // namespace

void JsonWriter::endLine() {
    m_out.write(m_buffer.GetString(), static_cast<std::streamsize>(m_buffer.GetSize()));
    m_out.put('\n');
    drop();
}

void JsonWriter::drop() {
    m_buffer.Clear();
    m_writer.Reset(m_buffer);
}

bool JsonWriter::sIsUtf8(std::string_view text) {
    if (sIsAscii(text)) {
        return true;
    }
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

bool JsonWriter::sIsPlain(std::string_view text) {
    return allWords(text, [](std::uint64_t word) {
        return ((word - kOnes * 0x20) | zeros(word ^ (kOnes * '"')) | zeros(word ^ (kOnes * '\\')) | word) & kHighBits;
    });
}

bool JsonWriter::sIsAscii(std::string_view text) {
    return allWords(text, [](std::uint64_t word) { return word & kHighBits; });
}

void JsonWriter::otherText(std::string_view text) {
    if (sIsUtf8(text)) {
        m_writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        return;
    }
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        result += length == 0 ? std::string_view("\uFFFD") : text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    m_writer.String(result.data(), static_cast<rapidjson::SizeType>(result.size()));
}
