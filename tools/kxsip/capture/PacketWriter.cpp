#include "tools/kxsip/capture/PacketWriter.h"

#include "tools/kxsip/Printable.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/capture/PcapngFile.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <utility>

class PacketWriter::Format {
public:
    explicit Format(std::string name) : m_name(std::move(name)) {}
    virtual ~Format() = default;
    Format(const Format&) = delete;
    Format& operator=(const Format&) = delete;

    virtual void write(const Packet& packet) = 0;
    virtual void finish() = 0;

    /** Whether an error was thrown. */
    bool hasFailed() const { return m_hasFailed; }

protected:
    [[noreturn]] void fail(const std::string& why) {
        m_hasFailed = true;
        throw CaptureError("cannot write " + printable(m_name) + ": " + why);
    }
    [[noreturn]] void fail() { fail(std::strerror(errno)); }

private:
    std::string m_name;
    bool m_hasFailed = false;
};

namespace {

constexpr int kSnapLength = 262144;

/** A pcap file, written by libpcap. It is opened with the first packet, whose link type it gets. */
class PcapFormat final : public PacketWriter::Format {
public:
    explicit PcapFormat(const std::string& name) : Format(name), m_file(std::fopen(name.c_str(), "wb")) {
        if (m_file == nullptr) {
            fail();
        }
    }
    ~PcapFormat() override {
        if (m_file != nullptr) {
            std::fclose(m_file);
        }
        if (m_dump != nullptr) {
            pcap_dump_close(m_dump);
        }
        if (m_capture != nullptr) {
            pcap_close(m_capture);
        }
    }

    void write(const Packet& packet) override {
        begin(packet.linkType);
        if (packet.linkType != m_linkType) {
            fail("the packets have several link types; name the file .pcapng");
        }
        pcap_pkthdr header{};
        header.ts.tv_sec = static_cast<time_t>(packet.time.count() / 1000000);
        header.ts.tv_usec = static_cast<suseconds_t>(packet.time.count() % 1000000);
        header.caplen = static_cast<bpf_u_int32>(packet.bytes.size());
        header.len = static_cast<bpf_u_int32>(packet.length);
        pcap_dump(reinterpret_cast<u_char*>(m_dump), &header, reinterpret_cast<const u_char*>(packet.bytes.data()));
        if (std::ferror(pcap_dump_file(m_dump)) != 0) {
            fail();
        }
    }
    void finish() override {
        begin(DLT_EN10MB);
        if (pcap_dump_flush(m_dump) != 0) {
            fail();
        }
    }

private:
    void begin(int linkType) {
        if (m_dump != nullptr) {
            return;
        }
        m_linkType = linkType;
        m_capture = pcap_open_dead(linkType, kSnapLength);
        if (m_capture == nullptr) {
            fail();
        }
        m_dump = pcap_dump_fopen(m_capture, std::exchange(m_file, nullptr)); // which closes it, also after an error
        if (m_dump == nullptr) {
            fail(pcap_geterr(m_capture));
        }
    }

    std::FILE* m_file;
    pcap_t* m_capture = nullptr;
    pcap_dumper_t* m_dump = nullptr;
    int m_linkType = 0;
};

/** A pcapng file, with an interface for each link type. */
class PcapngFormat final : public PacketWriter::Format {
public:
    explicit PcapngFormat(const std::string& name) : Format(name), m_file(name, std::ios::binary) {
        Block section(0x0A0D0D0A); // with the version 1.0, and a length of the section that is not known
        section.number(0x1A2B3C4D).number(1).number(~0U).number(~0U);
        put(section);
    }

    void write(const Packet& packet) override {
        const auto time = static_cast<std::uint64_t>(packet.time.count());
        const auto size = static_cast<std::uint32_t>(packet.bytes.size());
        const std::uint32_t interface = interfaceOf(packet.linkType);
        Block block(6);
        block.number(interface).number(static_cast<std::uint32_t>(time >> 32)).number(static_cast<std::uint32_t>(time));
        block.number(size).number(static_cast<std::uint32_t>(packet.length)).bytes(packet.bytes);
        put(block);
    }
    void finish() override {
        m_file.close();
        check();
    }

private:
    /** A block with its length before and after its body, which is filled up to a multiple of four bytes. */
    class Block {
    public:
        explicit Block(std::uint32_t type) : m_type(type) {}

        Block& number(std::uint32_t value) {
            m_body.append(reinterpret_cast<const char*>(&value), sizeof value);
            return *this;
        }
        void bytes(const std::string& bytes) { m_body.append(bytes).append((4 - bytes.size() % 4) % 4, '\0'); }
        std::string whole() const {
            const auto length = static_cast<std::uint32_t>(m_body.size() + 12);
            Block begin(m_type);
            begin.number(m_type).number(length);
            Block end(m_type);
            end.number(length);
            return begin.m_body + m_body + end.m_body;
        }

    private:
        std::uint32_t m_type;
        std::string m_body;
    };

    std::uint32_t interfaceOf(int linkType) {
        const auto [known, isNew] = m_interfaces.emplace(linkType, static_cast<std::uint32_t>(m_interfaces.size()));
        if (isNew) {
            Block block(1);
            block.number(PcapngFile::sNumberOf(linkType)).number(0);
            put(block);
        }
        return known->second;
    }

    void put(const Block& block) {
        m_file << block.whole();
        check();
    }
    void check() {
        if (!m_file) {
            fail();
        }
    }

    std::ofstream m_file;
    std::map<int, std::uint32_t> m_interfaces; ///< Numbers of the interfaces by link type.
};

} // namespace

PacketWriter::PacketWriter(const std::string& name) {
    if (name.ends_with(".pcapng")) {
        m_format = std::make_unique<PcapngFormat>(name);
    } else {
        m_format = std::make_unique<PcapFormat>(name);
    }
}

PacketWriter::~PacketWriter() = default;

void PacketWriter::write(const Packets& packets) {
    Packets sorted = packets;
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a->number < b->number; });
    for (const std::shared_ptr<const Packet>& packet : sorted) {
        if (isNew(packet)) {
            m_format->write(*packet);
        }
    }
}

void PacketWriter::finish() {
    if (!m_format->hasFailed()) { // once reported is enough
        m_format->finish();
    }
}

bool PacketWriter::isNew(const std::shared_ptr<const Packet>& packet) {
    if (m_written.size() >= m_tidyAt) {
        std::erase_if(m_written, [](const auto& written) { return written.expired(); });
        m_tidyAt = std::max<std::size_t>(1024, m_written.size() * 2);
    }
    return m_written.insert(packet).second;
}
