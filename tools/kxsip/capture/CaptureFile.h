#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct pcap;

/** A capture can't be read; the text says why and what to do. */
class CaptureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** A frame as the capture holds it. */
struct Frame {
    std::chrono::microseconds time{}; ///< Since 1970.
    std::string_view bytes;           ///< Good until the next frame is read.
    bool isCut = false;               ///< The capture kept its beginning only.
};

/** The frames of a pcap or pcapng file that lies in memory. */
class CaptureFile {
public:
    /** Whether the bytes begin as a capture does, plain or gzipped. */
    static bool sIsCapture(std::string_view bytes);

    /** The bytes must outlive this object. Throws CaptureError. */
    explicit CaptureFile(std::string_view bytes);

    /** The next frame; nothing at the end of the file or where it is damaged. */
    std::optional<Frame> next();

    /** What libpcap calls DLT_. */
    int linkType() const;
    /** What is wrong with the file behind the last frame; empty where nothing is. */
    const std::string& damage() const { return m_damage; }

private:
    struct Closer {
        void operator()(pcap* capture) const;
    };

    std::unique_ptr<pcap, Closer> m_capture;
    std::string m_damage;
};
