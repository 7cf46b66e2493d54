#pragma once

#include "tools/kxsip/Input.h"
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

    /** Returns a reader for the input, of which nothing must have been dropped: a CaptureReader for a capture, else a
        MessageReader. The input must outlive it. Throws CaptureError, with the file's name, for a capture that can't be
        opened, and std::system_error. With `keepsPackets`, the messages have their packets; an input that is no capture
        is a CaptureError. */
    static std::unique_ptr<MessageSource> sOpen(Input& input, bool keepsPackets = false);

    /** Returns the next message as soon as it has arrived, or nothing at the end. Throws std::system_error. */
    virtual std::optional<ReadMessage> next() = 0;
    /** Returns notes for the user about the file. To be called after the last message. */
    virtual std::vector<std::string> notes() const { return {}; }
    /** Returns the outcome for the file itself, without its messages. */
    virtual Outcome outcome() const { return Outcome::Valid; }

protected:
    MessageSource() = default;
};
