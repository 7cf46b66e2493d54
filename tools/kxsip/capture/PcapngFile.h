#pragma once

#include "tools/kxsip/capture/CaptureFile.h"

#include <cstdint>
#include <vector>

/** Reads a pcapng file, with any number of sections and interfaces, which may have different link types and units of
    time. Blocks of unknown types are passed over. Holds one block of at most 16 MiB. [draft-ietf-opsawg-pcapng] */
class PcapngFile final : public CaptureFile {
public:
    /** Whether the bytes begin like a pcapng file. */
    static bool sBegins(std::string_view bytes);
    /** Returns the number in files for a link type of libpcap: raw IP has another one. */
    static std::uint32_t sNumberOf(int linkType);

    /** The input must outlive this object. */
    explicit PcapngFile(Input& input) : m_input(input) {}

    std::optional<Frame> next() override;

private:
    struct Interface {
        int linkType = 0;
        std::size_t snapLength = 0; ///< 0 for no limit.
        std::uint64_t unitsPerSecond = 1000000;
        std::int64_t offset = 0; ///< In seconds, of all times.
    };
    /** A block without its type and lengths. */
    struct Block {
        std::uint32_t type = 0;
        std::string_view body;
    };

    std::optional<Block> nextBlock();
    bool skip(std::size_t count);
    bool fetch(std::size_t count);
    void beginSection();
    std::uint64_t number(std::string_view bytes, std::size_t at, std::size_t length) const;

    void addInterface(std::string_view body);
    void readOptions(std::string_view options, Interface& interface) const;
    Frame frameOf(const Block& block) const;
    Frame simpleFrame(std::string_view body) const;

    Input& m_input;
    std::size_t m_used = 0;     ///< Bytes of the latest block at the beginning of the input.
    bool m_isBigEndian = false; ///< The byte order of the section.
    std::vector<Interface> m_interfaces;
    std::chrono::microseconds m_latest{}; ///< For a frame without a time.
};
