#pragma once

#include "tools/kxsip/Input.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

/** The error that a capture can't be read or written; the text says why and what to do. */
class CaptureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** A frame as the capture holds it. */
struct Frame {
    std::chrono::microseconds time{}; ///< Since 1970, before the year 10000.
    std::string_view bytes;           ///< Valid until the next frame is read.
    std::size_t length = 0;           ///< Bytes on the wire; more than `bytes` has if the frame was cut.
    int linkType = 0;                 ///< One of the DLT_ values of libpcap.
};

/** Reads the frames of a capture, each when it has arrived. */
class CaptureFile {
public:
    /** Number of bytes at the beginning of a file that sIsCapture looks at. */
    static constexpr std::size_t kMagicLength = 12;
    /** Whether the bytes begin like a pcap or pcapng file. */
    static bool sIsCapture(std::string_view bytes);
    /** Opens a capture, of which nothing must have been dropped. The input must outlive it. Throws CaptureError. */
    static std::unique_ptr<CaptureFile> sOpen(Input& input);

    virtual ~CaptureFile() = default;
    CaptureFile(const CaptureFile&) = delete;
    CaptureFile& operator=(const CaptureFile&) = delete;

    /** Returns the next frame, or nothing at the end of the file or where the file is damaged. A frame that was cut off
        by an Interrupt is no damage. */
    virtual std::optional<Frame> next() = 0;
    /** Returns the error after the last frame, empty if there is none. */
    const std::string& damage() const { return m_damage; }

protected:
    CaptureFile() = default;

    /** Returns a time since 1970 that is not before 1970 and not after 9999: a capture may have any time, but times as
        text and differences of times need years of four digits. */
    static std::chrono::microseconds sTime(std::int64_t seconds, std::int64_t microseconds);
    /** Sets the error, unless an Interrupt cut the input off. */
    void setDamage(std::string why);

private:
    std::string m_damage;
};
