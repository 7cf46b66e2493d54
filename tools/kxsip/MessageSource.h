#pragma once

#include "tools/kxsip/Input.h"
#include "tools/kxsip/ReadMessage.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** The messages of one file, in order. */
class MessageSource {
public:
    virtual ~MessageSource() = default;
    MessageSource(const MessageSource&) = delete;
    MessageSource& operator=(const MessageSource&) = delete;

    /** Returns a reader for the input, of which nothing must have been dropped: a CaptureReader for a capture, else a
        MessageReader; or for a file that is neither, one that has no messages but a note. The input must outlive it.
        With `keepsPackets`, the messages have their packets. Throws std::system_error; and CaptureError, with the
        file's name, for a capture that can't be opened, and with `keepsPackets` for a file that is no capture. */
    static std::unique_ptr<MessageSource> sOpen(Input& input, bool keepsPackets = false);

    /** Messages whose bytes `mayBeWanted` refuses need not be returned, where not parsing them saves time. They keep
        their numbers. To be called before the first message. */
    virtual void skipUnless(std::function<bool(std::string_view)> mayBeWanted) { static_cast<void>(mayBeWanted); }

    /** Returns the next message as soon as it has arrived, or nothing at the end. Throws std::system_error. */
    virtual std::optional<ReadMessage> next() = 0;
    /** Returns notes for the user about the file. To be called after the last message. */
    virtual std::vector<std::string> notes() const { return {}; }
    /** Returns what was passed over since it is no SIP, "3 keep-alives, 1 datagram without SIP"; empty if nothing was.
        To be called after the last message. */
    virtual std::string passedOver() const { return ""; }
    /** Returns the outcome for the file itself, without its messages. */
    virtual Outcome outcome() const { return Outcome::Valid; }

protected:
    MessageSource() = default;
};
