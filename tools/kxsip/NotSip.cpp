#include "tools/kxsip/NotSip.h"

#include "sipobject/messages/KxSipStartLine.h"

#include <algorithm>
#include <array>

namespace {

struct Packer {
    const char* name;
    std::string_view magic;
};

constexpr std::array<Packer, 6> kPackers = {{{"xz", {"\xFD\x37zXZ\0", 6}},
                                             {"zstd", {"\x28\xB5\x2F\xFD", 4}},
                                             {"bzip2", {"BZh", 3}},
                                             {"lz4", {"\x04\x22\x4D\x18", 4}},
                                             {"zip", {"PK\x03\x04", 4}},
                                             {"7z", {"7z\xBC\xAF\x27\x1C", 6}}}};

const Packer* findPacker(std::string_view bytes) {
    const auto* const packer = std::find_if(kPackers.begin(), kPackers.end(), [bytes](const Packer& candidate) {
        return bytes.starts_with(candidate.magic);
    });
    return packer == kPackers.end() ? nullptr : packer;
}

bool isControl(char c) {
    return (static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\r') || c == '\x7F';
}

} // namespace

/** A message with a body that is no text has lines of text up to an empty line. */
bool NotSip::sIs(std::string_view bytes) {
    constexpr std::size_t kShown = 512;
    if (findPacker(bytes) != nullptr) {
        return true;
    }
    bytes.remove_prefix(std::min(bytes.find_first_not_of("\r\n"), bytes.size()));
    bytes = bytes.substr(0, kShown);
    while (!bytes.empty()) {
        const std::string_view line = bytes.substr(0, bytes.find('\n'));
        if (line.find_first_not_of('\r') == std::string_view::npos || KxSipStartLine::sIsLikely(line)) {
            return false;
        }
        if (std::any_of(line.begin(), line.end(), isControl)) {
            return true;
        }
        bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
    }
    return false;
}

NotSip::NotSip(std::string_view bytes) : m_note("no capture and no SIP") {
    if (const Packer* const packer = findPacker(bytes)) {
        m_note += "; it is compressed with " + std::string(packer->name) + ", unpack it first";
    }
}
