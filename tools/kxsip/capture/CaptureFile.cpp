#include "tools/kxsip/capture/CaptureFile.h"

#include "tools/kxsip/Interrupt.h"
#include "tools/kxsip/capture/PcapFile.h"
#include "tools/kxsip/capture/PcapngFile.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr std::array<std::string_view, 6> kPcap = {
    // microseconds, nanoseconds, and an old patched form; in either byte order
    std::string_view("\xA1\xB2\xC3\xD4", 4), std::string_view("\xD4\xC3\xB2\xA1", 4),
    std::string_view("\xA1\xB2\x3C\x4D", 4), std::string_view("\x4D\x3C\xB2\xA1", 4),
    std::string_view("\xA1\xB2\xCD\x34", 4), std::string_view("\x34\xCD\xB2\xA1", 4),
};

} // namespace

bool CaptureFile::sIsCapture(std::string_view bytes) {
    return PcapngFile::sBegins(bytes) || std::any_of(kPcap.begin(), kPcap.end(), [bytes](std::string_view magic) {
               return bytes.starts_with(magic);
           });
}

std::unique_ptr<CaptureFile> CaptureFile::sOpen(Input& input) {
    if (PcapngFile::sBegins(input.bytes())) {
        return std::make_unique<PcapngFile>(input);
    }
    return std::make_unique<PcapFile>(input);
}

std::chrono::microseconds CaptureFile::sTime(std::int64_t seconds, std::int64_t microseconds) {
    constexpr std::int64_t kLast = 253402300799; // the end of 9999
    return std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, kLast)) +
           std::chrono::microseconds(std::clamp<std::int64_t>(microseconds, 0, 999999));
}

void CaptureFile::setDamage(std::string why) {
    if (!Interrupt::sHasCome()) {
        m_damage = std::move(why);
    }
}
