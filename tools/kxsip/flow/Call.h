#pragma once

#include "tools/kxsip/flow/Column.h"
#include "tools/kxsip/flow/Step.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

/** All messages of one Call-ID, ordered by time; a record of a CallBook. */
struct Call {
    std::string id;          ///< Empty for messages without Call-ID.
    std::size_t number = 0;  ///< See CallBook.
    std::vector<Step> steps; ///< At least one.
    std::vector<Column> columns;
    std::string cut; ///< Why a call that had not ended is drawn before the end of the input; else empty.

    void add(const ReadMessage& read, const MessageFacts& facts, std::size_t index);
    /** Orders the messages, and finds columns and repetitions. */
    void finish();
    void cutOff(const std::string& why) { cut = why; }

    std::chrono::microseconds begin() const { return steps.front().origin.time; }
    std::chrono::microseconds duration() const { return steps.back().origin.time - begin(); }
    /** Returns "5 messages in 0.711 s", and that the call did not end if it was cut. */
    std::string extent() const;
    /** Returns "INVITE sip:a@b > sip:c@d", with `between` between the URIs. */
    std::string title(std::string_view between = " > ") const;
    /** Returns the final response to the method of the first message, for example "486 Busy Here": the first success,
        else the last failure, else "no final response". */
    std::string result() const;
    /** Returns the status code of that response, 0 if there is none. */
    int resultCode() const;

private:
    const Step* finalResponse() const;
};

/** Returns the time in seconds, "0.503". */
std::string secondsText(std::chrono::microseconds time);
