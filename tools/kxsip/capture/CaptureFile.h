#pragma once

#include "tools/kxsip/Input.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct pcap;

/** The error that a capture can't be read; the text says why and what to do. */
class CaptureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** A frame as the capture holds it. */
struct Frame {
    std::chrono::microseconds time{}; ///< Since 1970.
    std::string_view bytes;           ///< Valid until the next frame is read.
    std::size_t length = 0;           ///< Bytes on the wire; more than `bytes` has if the frame was cut.
};

/** Reads the frames of a pcap or pcapng file, each when it has arrived. */
class CaptureFile {
public:
    /** Number of bytes at the beginning of a file that sIsCapture looks at. */
    static constexpr std::size_t kMagicLength = 12;
    /** Whether the bytes begin like a capture, plain or gzipped. */
    static bool sIsCapture(std::string_view bytes);

    /** The input must outlive this object. Throws CaptureError. */
    explicit CaptureFile(Input& input);

    /** Returns the next frame, or nothing at the end of the file or where the file is damaged. A frame that was cut off
        by an Interrupt is no damage. */
    std::optional<Frame> next();

    /** Returns the link type, one of the DLT_ values of libpcap. */
    int linkType() const;
    /** Returns the error after the last frame, empty if there is none. */
    const std::string& damage() const { return m_damage; }

private:
    struct Closer {
        void operator()(pcap* capture) const;
    };

    std::unique_ptr<pcap, Closer> m_capture;
    std::string m_damage;
};
