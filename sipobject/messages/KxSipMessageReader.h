#pragma once

#include "sipobject/messages/KxStatus.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

#include <string_view>

class KxInputStream;
class KxSipMessage;

/** Reads a message, which is untrusted input. A fault of a header line or of the body type is not thrown: it becomes
    the status of the message, if that is still 0. [RFC 3261 7] */
class KxSipMessageReader {
public:
    explicit KxSipMessageReader(KxSipMessage& message) : m_message(message) {}

    /** As the functions of KxSipMessage. */
    static void sAddConstructor(const KxString& token, KxSipMessage* (*creator)());
    static KxHandle<KxSipMessage> sConstructFrom(KxInputStream& in);
    /** An empty message of the class of the start token. */
    static KxHandle<KxSipMessage> sEmpty(std::string_view token);
    /** Reads the message after its first token and checks it. Throws the errors of start line, body and check. */
    void read(KxInputStream& in);
    /** Reads the header lines and the empty line after them. Drops lines that can't be read. */
    void readHeaders(KxInputStream& in);
    /** Reads the body, of as many bytes as Content-Length says. Without a Content-Length, reads the rest of the stream
        and adds one. Throws KxSipParseError. */
    void readBody(KxInputStream& in);

private:
    void setStatusIfValid(KxStatus status);
    bool acceptsOwnBodyType() const;

    KxSipMessage& m_message;
};
