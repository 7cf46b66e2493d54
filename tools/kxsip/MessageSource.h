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

    /** Returns a reader for the file: a CaptureReader for a capture, else a MessageReader. The file must outlive it.
        Throws CaptureError, with the file's name, for a capture that can't be opened. */
    static std::unique_ptr<MessageSource> sOpen(const InputFile& file);

    /** Returns the next message, or nothing at the end. */
    virtual std::optional<ReadMessage> next() = 0;
    /** Returns about how many bytes of the file have been read. */
    virtual std::size_t position() const = 0;
    /** Returns notes for the user about the file. To be called after the last message. */
    virtual std::vector<std::string> notes() const { return {}; }
    /** Returns the outcome for the file itself, without its messages. */
    virtual Outcome outcome() const { return Outcome::Valid; }

protected:
    MessageSource() = default;
};
