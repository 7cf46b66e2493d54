#include "tools/kxsip/capture/PcapngFile.h"

#include <pcap/dlt.h>

#include <algorithm>

namespace {

constexpr std::size_t kMostInterfaces = 65536;
constexpr std::size_t kLongestBlock = 16U << 20;
constexpr std::uint32_t kRawIp = 101; // the number of DLT_RAW in files
constexpr std::size_t kFraming = 12;  // a block's type, and its length at both ends

constexpr std::size_t kHeader = 20; // of the body of a packet's block

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kObsoletePacket = 2;
constexpr std::uint32_t kSimplePacket = 3;
constexpr std::uint32_t kEnhancedPacket = 6;

constexpr std::string_view kSectionType("\x0A\x0D\x0D\x0A", 4); // the same in both byte orders
constexpr std::string_view kBigEndian("\x1A\x2B\x3C\x4D", 4);
constexpr std::string_view kLittleEndian("\x4D\x3C\x2B\x1A", 4);

/** The error that a block contradicts itself. */
struct BadBlock {
    const char* why;
};

/** Returns seconds since 1970, limited to those that both types have. */
std::int64_t sum(std::uint64_t seconds, std::int64_t offset) {
    constexpr std::int64_t kMost = std::int64_t{1} << 61;
    return static_cast<std::int64_t>(std::min<std::uint64_t>(seconds, kMost)) + std::clamp(offset, -kMost, kMost);
}

bool isPacket(std::uint32_t type) {
    return type == kEnhancedPacket || type == kSimplePacket || type == kObsoletePacket;
}

/** Returns the units of time in a second, 0 if there are too many. Value of the option if_tsresol. */
std::uint64_t unitsOf(unsigned resolution) {
    constexpr unsigned kIsBinary = 0x80;
    const unsigned exponent = resolution & ~kIsBinary;
    if (exponent > ((resolution & kIsBinary) != 0 ? 63U : 19U)) {
        return 0;
    }
    std::uint64_t units = 1;
    for (unsigned i = 0; i < exponent; ++i) {
        units *= (resolution & kIsBinary) != 0 ? 2U : 10U;
    }
    return units;
}

/** Returns the microseconds of a number of units below one second. */
std::uint64_t microsecondsOf(std::uint64_t units, std::uint64_t unitsPerSecond) {
    while (unitsPerSecond > 1U << 30) { // so that the product fits
        units /= 2;
        unitsPerSecond /= 2;
    }
    return units * 1000000 / unitsPerSecond;
}

} // namespace

bool PcapngFile::sBegins(std::string_view bytes) {
    const std::string_view order = bytes.substr(std::min<std::size_t>(bytes.size(), 8), 4);
    return bytes.starts_with(kSectionType) && (order == kBigEndian || order == kLittleEndian);
}

std::uint32_t PcapngFile::sNumberOf(int linkType) {
    return linkType == DLT_RAW ? kRawIp : static_cast<std::uint32_t>(linkType);
}

std::optional<Frame> PcapngFile::next() {
    try {
        while (const std::optional<Block> block = nextBlock()) {
            if (block->type == kSectionHeader) {
                m_interfaces.clear();
            } else if (block->type == kInterface) {
                addInterface(block->body);
            } else if (isPacket(block->type)) {
                const Frame frame = frameOf(*block);
                m_latest = frame.time;
                return frame;
            }
        }
    } catch (const BadBlock& bad) {
        setDamage(bad.why);
    }
    return std::nullopt;
}

/** Returns the next block that is of interest, nothing at the end. */
std::optional<PcapngFile::Block> PcapngFile::nextBlock() {
    while (true) {
        m_input.drop(m_used);
        m_used = 0;
        if (!fetch(1)) {
            return std::nullopt;
        }
        if (!fetch(kFraming)) {
            throw BadBlock{"it ends within a block"};
        }
        if (m_input.bytes().starts_with(kSectionType)) {
            beginSection();
        }
        const auto type = static_cast<std::uint32_t>(number(m_input.bytes(), 0, 4));
        const std::size_t length = number(m_input.bytes(), 4, 4);
        const std::size_t padded = (length + 3) / 4 * 4;
        if (length < kFraming) {
            throw BadBlock{"a block is too short"};
        }
        if (type != kSectionHeader && type != kInterface && !isPacket(type)) {
            if (!skip(padded)) {
                throw BadBlock{"it ends within a block"};
            }
            continue;
        }
        if (length > kLongestBlock) {
            throw BadBlock{"a block is too long"};
        }
        if (!fetch(padded)) {
            throw BadBlock{"it ends within a block"};
        }
        if (number(m_input.bytes(), padded - 4, 4) != length) {
            throw BadBlock{"the two lengths of a block differ"};
        }
        m_used = padded;
        return Block{type, m_input.bytes().substr(8, padded - kFraming)};
    }
}

/** Waits for bytes. Returns false if the input ends before. */
bool PcapngFile::fetch(std::size_t count) {
    while (m_input.bytes().size() < count && m_input.more()) {
    }
    return m_input.bytes().size() >= count;
}

/** Drops bytes when they have come, so that they are not held. */
bool PcapngFile::skip(std::size_t count) {
    while (count > 0 && fetch(1)) {
        const std::size_t here = std::min(count, m_input.bytes().size());
        m_input.drop(here);
        count -= here;
    }
    return count == 0;
}

/** Takes the byte order from a section header. */
void PcapngFile::beginSection() {
    const std::string_view order = m_input.bytes().substr(8, 4);
    if (order != kBigEndian && order != kLittleEndian) {
        throw BadBlock{"a section has no byte order"};
    }
    m_isBigEndian = order == kBigEndian;
}

std::uint64_t PcapngFile::number(std::string_view bytes, std::size_t at, std::size_t length) const {
    if (at + length > bytes.size()) {
        throw BadBlock{"a block is too short"};
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < length; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + (m_isBigEndian ? i : length - 1 - i)]);
    }
    return value;
}

void PcapngFile::addInterface(std::string_view body) {
    constexpr std::size_t kOptions = 8;
    if (m_interfaces.size() == kMostInterfaces) {
        throw BadBlock{"too many interfaces"};
    }
    Interface interface;
    const std::uint64_t linkType = number(body, 0, 2);
    interface.linkType = linkType == kRawIp ? DLT_RAW : static_cast<int>(linkType);
    interface.snapLength = number(body, 4, 4);
    readOptions(body.substr(kOptions), interface);
    m_interfaces.push_back(interface);
}

void PcapngFile::readOptions(std::string_view options, Interface& interface) const {
    constexpr std::uint64_t kEnd = 0;
    constexpr std::uint64_t kResolution = 9;
    constexpr std::uint64_t kOffset = 14;
    while (options.size() >= 4 && number(options, 0, 2) != kEnd) {
        const std::uint64_t code = number(options, 0, 2);
        const std::size_t length = number(options, 2, 2);
        if (code == kResolution) {
            interface.unitsPerSecond = unitsOf(static_cast<unsigned>(number(options, 4, 1)));
        } else if (code == kOffset) {
            interface.offset = static_cast<std::int64_t>(number(options, 4, 8));
        }
        options.remove_prefix(std::min(4 + (length + 3) / 4 * 4, options.size()));
    }
    if (interface.unitsPerSecond == 0) {
        throw BadBlock{"an interface has a unit of time that is not supported"};
    }
}

Frame PcapngFile::frameOf(const Block& block) const {
    const std::string_view body = block.body;
    if (block.type == kSimplePacket) {
        return simpleFrame(body);
    }
    const std::size_t interface = number(body, 0, block.type == kEnhancedPacket ? 4 : 2);
    const std::uint64_t units = number(body, 4, 4) << 32 | number(body, 8, 4);
    const std::size_t kept = number(body, 12, 4);
    if (interface >= m_interfaces.size()) {
        throw BadBlock{"a packet is of an interface that is not described"};
    }
    if (kHeader + kept > body.size()) {
        throw BadBlock{"a packet is longer than its block"};
    }
    const Interface& from = m_interfaces[interface];
    const std::uint64_t seconds = units / from.unitsPerSecond;
    const std::uint64_t rest = microsecondsOf(units % from.unitsPerSecond, from.unitsPerSecond);
    return {sTime(sum(seconds, from.offset), static_cast<std::int64_t>(rest)), body.substr(kHeader, kept),
            std::max<std::size_t>(number(body, 16, 4), kept), from.linkType};
}

/** A simple packet has no time, and gets that of the packet before it. */
Frame PcapngFile::simpleFrame(std::string_view body) const {
    if (m_interfaces.empty()) {
        throw BadBlock{"a packet is of an interface that is not described"};
    }
    const Interface& from = m_interfaces.front();
    const std::size_t length = number(body, 0, 4);
    const std::size_t limit = from.snapLength == 0 ? length : std::min(length, from.snapLength);
    return {m_latest, body.substr(4, limit), length, from.linkType};
}
