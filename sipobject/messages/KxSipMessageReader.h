#pragma once

#include "sipobject/messages/KxStatus.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

#include <cstddef>
#include <string_view>

class KxException;
class KxInputStream;
class KxSipHeader;
class KxSipLine;
class KxSipMessage;

/** Reads a message, which is untrusted input. A fault of a header line or of the body type is not thrown: it becomes
    the status of the message, if that is still 0. If the stream is a KxSipReportedBytes, what can't be read is noted
    there; other streams cost nothing for that. [RFC 3261 7] */
class KxSipMessageReader {
public:
    explicit KxSipMessageReader(KxSipMessage& message) : m_message(message) {}

    /** As the functions of KxSipMessage. */
    static void sAddConstructor(const KxString& token, KxSipMessage* (*creator)());
    static KxHandle<KxSipMessage> sConstructFrom(KxInputStream& in);
    /** As above. The message is in the handle as soon as there is one, and stays there if it is then refused. */
    static void sConstructFrom(KxInputStream& in, KxHandle<KxSipMessage>& message);
    /** An empty message of the class of the start token. */
    static KxHandle<KxSipMessage> sEmpty(std::string_view token);
    /** Gives a message whose start line was refused the headers of the stream, and no others. */
    void salvage(KxInputStream& headerSection);
    /** Reads the message after its first token and checks it. Throws the errors of start line, body and check. */
    void read(KxInputStream& in);
    /** Reads the header lines and the empty line after them. Drops lines that can't be read, or in the RFC grammar
        keeps the values that can't be read as text; a KxSipReportedBytes gets a note of each line. */
    void readHeaders(KxInputStream& in);
    /** Reads the body, of as many bytes as Content-Length says. Without a Content-Length, reads the rest of the stream
        and adds one. Throws KxSipParseError. */
    void readBody(KxInputStream& in);
    /** Stores the status unless the message has one. */
    void setStatusIfValid(KxStatus status);

private:
    bool acceptsOwnBodyType() const;
    bool addIfKept(KxHandle<KxSipHeader>& header);
    bool keepByValue(const KxSipLine& line);
    template <class Why>
    void note(KxInputStream& in, KxSipLine& line, const char* start, bool isKept, const Why& why);
    void mergeEqualLengths();

    KxSipMessage& m_message;
    std::size_t m_keptLines = 0; ///< The number of lines of which something is kept as text.
    KxHandle<KxException>
        m_refusal; ///< The error of a line without which the message is refused; nil if there is none.
};
