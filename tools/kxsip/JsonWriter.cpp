#include "tools/kxsip/JsonWriter.h"

#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Terminal.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace {

/** Returns the number of bytes of the first character, 0 if it is not UTF-8. */
std::size_t characterLength(std::string_view text) {
    rapidjson::MemoryStream in(text.data(), text.size());
    unsigned code = 0;
    return rapidjson::UTF8<>::Decode(in, &code) ? in.Tell() : 0;
}

/** Returns the JSON text with those characters escaped that would control a terminal. They are within strings. */
std::string shown(std::string_view line) {
    std::string result;
    while (!line.empty()) {
        const std::string_view character = line.substr(0, std::max<std::size_t>(characterLength(line), 1));
        rapidjson::MemoryStream in(character.data(), character.size());
        unsigned code = 0;
        if (printable(character) != character && rapidjson::UTF8<>::Decode(in, &code) && code <= 0xFFFF) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04X", code);
            result += escape.data();
        } else {
            result += character;
        }
        line.remove_prefix(character.size());
    }
    return result;
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
    text.copy(reinterpret_cast<char*>(&word), text.size());
    return faultOf(word) == 0;
}

} // namespace

void JsonWriter::endLine() {
    const std::string_view line(m_buffer.GetString(), m_buffer.GetSize());
    static const bool s_isTerminal = Terminal::isOutput();
    m_out << (s_isTerminal ? shown(line) : line) << '\n';
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
