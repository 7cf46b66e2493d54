#pragma once

#include "tools/kxsip/ReadMessage.h"

/** What people name a message by. Of a message that was refused, what its text tells, as far as it can be read. */
struct MessageFacts {
    std::string method; ///< Of a response the method it answers.
    int code = 0;       ///< 0 for a request.
    std::string reason; ///< Of a response.
    std::string callId;
    std::string from; ///< The caller's URI; empty where there is none.
    std::string to;

    explicit MessageFacts(const ReadMessage& read);

    bool isResponse() const { return code != 0; }
    /** "INVITE", "180 Ringing"; control characters as \xNN. */
    std::string label() const;

private:
    void takeStartLine(std::string_view line);
    void takeText(const ReadMessage& read);
    void takeObject(const KxSipMessage& message);
};
