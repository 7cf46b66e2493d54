#include "tools/kxsip/capture/Datagram.h"

#include "sipobject/messages/KxSipStartLine.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongestKeepAlive = 4;

/** [RFC 8489 5] */
bool isStun(std::string_view payload) {
    constexpr std::string_view kMagicCookie("\x21\x12\xA4\x42", 4);
    constexpr std::size_t kHeader = 20;
    return payload.size() >= kHeader && (payload[0] & 0xC0) == 0 && payload.substr(4, 4) == kMagicCookie;
}

/** [RFC 3550 5.1, 6.1] */
bool isMedia(std::string_view payload) {
    constexpr std::size_t kShortest = 8;
    return payload.size() >= kShortest && (payload[0] & 0xC0) == 0x80;
}

/** [RFC 8446 5.1, RFC 9147 4] */
bool isEncrypted(std::string_view payload) {
    constexpr std::size_t kHeader = 5;
    if (payload.size() < kHeader || payload[0] < 20 || payload[0] > 26) {
        return false;
    }
    return payload[1] == 3 || payload.substr(1, 1) == "\xFE";
}

} // namespace

DatagramKind datagramKind(std::string_view payload) {
    const std::size_t begin = std::min(payload.find_first_not_of("\r\n"), payload.size());
    const std::string_view text = payload.substr(begin);
    if (KxSipStartLine::sIsLikely(text.substr(0, text.find('\n')))) {
        return DatagramKind::Message;
    }
    if (payload.size() <= kLongestKeepAlive || isStun(payload) ||
        payload.find_first_not_of(std::string_view("\r\n\0", 3)) == std::string_view::npos) {
        return DatagramKind::KeepAlive;
    }
    if (isMedia(payload)) {
        return DatagramKind::Media;
    }
    return isEncrypted(payload) ? DatagramKind::Encrypted : DatagramKind::Other;
}
