#pragma once

#include "tools/kxsip/InputFile.h"
#include "tools/kxsip/ReadMessage.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/** The messages of one file, in order. */
class MessageSource {
public:
    virtual ~MessageSource() = default;
    MessageSource(const MessageSource&) = delete;
    MessageSource& operator=(const MessageSource&) = delete;

    /** What reads this file: a CaptureReader for a capture, else a MessageReader. The file must outlive it. Throws
        CaptureError, with the file's name, for a capture that can't be opened. */
    static std::unique_ptr<MessageSource> sOpen(const InputFile& file);

    /** The next message; nothing at the end. */
    virtual std::optional<ReadMessage> next() = 0;
    /** About how many bytes of the file have been read. */
    virtual std::size_t position() const = 0;
    /** What the user should know of the file besides its messages, once there are no more of them. */
    virtual std::vector<std::string> notes() const { return {}; }
    /** What the file itself, messages apart, comes to. */
    virtual Outcome outcome() const { return Outcome::Valid; }

protected:
    MessageSource() = default;
};
