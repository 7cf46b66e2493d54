#include "tools/kxsip/capture/PcapFile.h"

#include "tools/kxsip/capture/IpPacket.h"

#include <pcap/pcap.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

namespace {

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

void PcapFile::Closer::operator()(pcap* capture) const {
    pcap_close(capture);
}

PcapFile::PcapFile(Input& input) {
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
    if (const int linkType = pcap_datalink(m_capture.get()); !IpPacket::sKnowsLinkType(linkType)) {
        throw CaptureError("its link type " + std::to_string(linkType) +
                           " is not supported; capture on an Ethernet or loopback interface, or on \"any\"");
    }
}

std::optional<Frame> PcapFile::next() {
    pcap_pkthdr* header = nullptr;
    const unsigned char* bytes = nullptr;
    const int result = pcap_next_ex(m_capture.get(), &header, &bytes);
    if (result == 1) {
        const std::string_view text(reinterpret_cast<const char*>(bytes), header->caplen);
        return Frame{sTime(header->ts.tv_sec, header->ts.tv_usec), text, header->len, pcap_datalink(m_capture.get())};
    }
    if (result == PCAP_ERROR) {
        setDamage(pcap_geterr(m_capture.get()));
    }
    return std::nullopt;
}
