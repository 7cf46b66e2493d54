#include "tools/kxsip/capture/CaptureFile.h"

#include "tools/kxsip/Interrupt.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <system_error>

namespace {

constexpr std::string_view kGzip("\x1F\x8B\x08", 3);
constexpr std::string_view kBlockType("\x0A\x0D\x0D\x0A", 4); // pcapng's first block; its byte order is at 8

constexpr std::array<std::string_view, 6> kPcap = {
    // microseconds, nanoseconds, and an old patched form; in either byte order
    std::string_view("\xA1\xB2\xC3\xD4", 4), std::string_view("\xD4\xC3\xB2\xA1", 4),
    std::string_view("\xA1\xB2\x3C\x4D", 4), std::string_view("\x4D\x3C\xB2\xA1", 4),
    std::string_view("\xA1\xB2\xCD\x34", 4), std::string_view("\x34\xCD\xB2\xA1", 4),
};

bool isPcapng(std::string_view bytes) {
    constexpr std::string_view kOrder("\x1A\x2B\x3C\x4D", 4);
    constexpr std::string_view kOtherOrder("\x4D\x3C\x2B\x1A", 4);
    const std::string_view order = bytes.substr(std::min<std::size_t>(bytes.size(), 8), 4);
    return bytes.starts_with(kBlockType) && (order == kOrder || order == kOtherOrder);
}

/** Limits the time: a capture may have any time, but times as text and differences of times need years of four
    digits. */
std::chrono::microseconds timeOf(const timeval& stamp) {
    constexpr std::int64_t kLast = 253402300799; // the end of 9999
    const auto seconds = std::clamp<std::int64_t>(stamp.tv_sec, 0, kLast);
    const auto fraction = std::clamp<std::int64_t>(stamp.tv_usec, 0, 999999);
    return std::chrono::seconds(seconds) + std::chrono::microseconds(fraction);
}

/** Gives libpcap the bytes of an Input. No exception may pass through libpcap. */
ssize_t readInput(void* cookie, char* to, std::size_t capacity) {
    Input& input = *static_cast<Input*>(cookie);
    try {
        if (input.bytes().empty() && !input.more()) {
            return 0;
        }
    } catch (const std::exception&) {
        errno = EIO;
        return -1;
    }
    const std::size_t count = input.bytes().copy(to, capacity);
    input.drop(count);
    return static_cast<ssize_t>(count);
}

} // namespace

bool CaptureFile::sIsCapture(std::string_view bytes) {
    const auto begins = [bytes](std::string_view magic) { return bytes.starts_with(magic); };
    return std::any_of(kPcap.begin(), kPcap.end(), begins) || isPcapng(bytes) || begins(kGzip);
}

void CaptureFile::Closer::operator()(pcap* capture) const {
    pcap_close(capture);
}

CaptureFile::CaptureFile(Input& input) {
    if (input.bytes().starts_with(kGzip)) {
        throw CaptureError("it is compressed; unpack it first: gunzip -c FILE | kxsip COMMAND -");
    }
    std::FILE* const in = fopencookie(&input, "rb", {readInput, nullptr, nullptr, nullptr});
    if (in == nullptr) {
        throw CaptureError(std::generic_category().message(errno));
    }
    std::array<char, PCAP_ERRBUF_SIZE> why{};
    m_capture.reset(pcap_fopen_offline_with_tstamp_precision(in, PCAP_TSTAMP_PRECISION_MICRO, why.data()));
    if (m_capture == nullptr) {
        std::fclose(in);
        throw CaptureError("the capture's header is damaged (" + std::string(why.data()) + "); capture it again");
    }
}

int CaptureFile::linkType() const {
    return pcap_datalink(m_capture.get());
}

std::optional<Frame> CaptureFile::next() {
    pcap_pkthdr* header = nullptr;
    const unsigned char* bytes = nullptr;
    const int result = pcap_next_ex(m_capture.get(), &header, &bytes);
    if (result == 1) {
        const std::string_view text(reinterpret_cast<const char*>(bytes), header->caplen);
        return Frame{timeOf(header->ts), text, header->len};
    }
    if (result == PCAP_ERROR && !Interrupt::sHasCome()) {
        m_damage = pcap_geterr(m_capture.get());
    }
    return std::nullopt;
}
