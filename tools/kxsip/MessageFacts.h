#pragma once

#include "tools/kxsip/ReadMessage.h"

/** The facts by which a user recognises a message. Those of a refused message are taken from what can be
    read of it. */
struct MessageFacts {
    std::string method; ///< Of a response, the method of CSeq.
    int code = 0;       ///< 0 for a request.
    std::string reason; ///< The reason phrase of a response.
    std::string callId;
    std::string from; ///< The URI of From; empty if there is none.
    std::string to;
    bool hasSdp = false; ///< Whether Content-Type says that the body is SDP.

    explicit MessageFacts(const ReadMessage& read);

    bool isResponse() const { return code != 0; }
    /** Returns the method, or status code and reason phrase ("180 Ringing"), with control characters as \xNN. */
    std::string label() const;

private:
    void takeStartLine(std::string_view text);
    void takeHeaders(const KxSipMessage& message, std::string_view text);
};
