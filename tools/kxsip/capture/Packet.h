#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/** A frame of a capture, kept so that it can be written into another capture. */
struct Packet {
    std::chrono::microseconds time{}; ///< Since 1970.
    int linkType = 0;                 ///< One of the DLT_ values of libpcap.
    std::size_t length = 0;           ///< Bytes on the wire; more than `bytes` has if the frame was cut.
    std::size_t number = 0;           ///< In the file, 0 for the first.
    std::string bytes;
};

using Packets = std::vector<std::shared_ptr<const Packet>>;
