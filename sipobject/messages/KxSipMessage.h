#pragma once

#include "core/Assertion.h"
#include "core/LogDeferral.h"
#include "core/LogLevel.h"
#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/messages/KxSipHeaderSlots.h"
#include "sipobject/messages/KxStatus.h"
#include "util/KxInetAddress.h"
#include "util/KxMutex.h"
#include "util/KxSocketImpl.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <vector>

namespace Oskan {
class Logger;
}
class KxByteArray;
class KxException;
class KxSipCSeqHeader;
class KxSipCallIdHeader;
class KxSipContactHeader;
class KxSipContentEncodingHeader;
class KxSipContentLengthHeader;
class KxSipContentTypeHeader;
class KxSipFromHeader;
class KxSipSessionExpiresHeader;
class KxSipSubjectHeader;
class KxSipSupportedHeader;
class KxSipToHeader;
class KxSipViaHeader;

/** A SIP message: its headers by kind, its body, its version, and where it came from or goes to. Requests and responses
    add their start lines. [RFC 3261 7]

    Headers of one kind hang in a chain behind the first; kinds are written in the order in which each first came, one
    line a value. A message owns its headers: no header object is in two messages, and a copy of a message shares nothing
    with it that can be changed.

    Threads: adding, looking up and removing headers, setBody, serialize and copying from a message take its lock and
    may run on several threads at once; the typed getters, getHeaderByID and the plain accessors do not. A header that
    was handed out is used by one thread at a time. What the library logs under the lock is written after it is
    released, so a log appender may ask the message. */
class KX_SIP_API KxSipMessage : public KxObject {
public:
    /** Makes an empty message of a class. */
    using Creator = KxSipMessage* (*)();

    ~KxSipMessage() override;

    /** Status 0, and whatever a class adds to that. */
    virtual bool isValid() const;
    virtual bool isRequest() const = 0;

protected:
    /** Writes the start line with its line end. */
    virtual void serializeStartLine(KxOutputStream& out) const = 0;
    /** Reads the message behind its first token; see sConstructFrom. */
    virtual void parse(const char* token, KxInputStream& in);
    /** Tests that Via, From, To, CSeq, Content-Length and Call-ID are there, all but Via once, that the CSeq names the
        method of the request and that a body has a Content-Type. The first failure makes the status 2 and throws
        KxException "missing Via header", "multiple To headers detected", "invalid method in CSeq header (got=...",
        "SIP Message has body but no Content-Type header" and the like. [RFC 3261 8.1.1, 20] */
    virtual void checkValidity();
    /** The part of checkValidity that compares a request's CSeq with its method, letter case ignored. */
    virtual void checkCSeqMethod();
    /** Reads the rest of the start line with its line end. Throws KxSipParseError. */
    virtual void parseStartLine(KxInputStream& in) = 0;

public:
    bool isResponse() const { return !isRequest(); }

    /** Reads one message. What can be kept is kept: a header line that can't be read is dropped and the status becomes
        1; a body type that the message's own Accept does not list makes it 2. Bytes behind the body stay unread; without
        a Content-Length the rest of the stream is the body.
        Throws what checkValidity throws, for a message of which nothing was dropped; KxSipParseKeepAliveException where
        the stream starts with white space or "/"; KxSipParseError "SIP Method Token Expected" for an empty stream,
        "message body is shorter than Content-Length" and the texts of the start-line readers. [RFC 3261 7, 18.3] */
    static KxHandle<KxSipMessage> sConstructFrom(KxInputStream& in);
    /** Registers the class of a start token, letter case respected; for static initialisers, the first stands. */
    static void sAddConstructor(const KxString& token, Creator creator);

    /** Writes the message: start line, headers, an empty line, and as much of the body as Content-Length says and as
        there is; then flushes. */
    void serialize(KxOutputStream& out) const;
    void display(KxOutputStream& out, bool verbose) const override;

    /** The first header of a kind, nil when there is none. */
    const KxHandle<KxSipHeader>& getHeaderByID(HeaderID id) const {
        OSKAN_ASSERT(id < KxHeaderIDs::kCount);
        return m_headers.first(id);
    }
    /** The kinds of header there are, in the order in which serialize writes them. */
    std::vector<HeaderID> getHeaderOrder() const;
    /** The kind whose first header is written under the name, letter case ignored; that of the unknown headers when
        there is none. Without the lock. */
    HeaderID mTokenToID(std::string_view name) const { return m_headers.find(name); }
    /** The first header that is written under the name, letter case ignored (so not one that came under its compact
        name); of headers that are not registered the first of exactly that name. Its getNext goes on from there. */
    KxHandle<KxSipHeader> getHeader(std::string_view name) const;

    /** The first header of the kind, nil when there is none. */
    KxHandle<KxSipViaHeader> getViaHeader() const;
    KxHandle<KxSipFromHeader> getFromHeader() const;
    KxHandle<KxSipToHeader> getToHeader() const;
    KxHandle<KxSipCSeqHeader> getCSeqHeader() const;
    KxHandle<KxSipCallIdHeader> getCallIdHeader() const;
    KxHandle<KxSipContentLengthHeader> getContentLengthHeader() const;
    KxHandle<KxSipContactHeader> getContactHeader() const;
    KxHandle<KxSipContentEncodingHeader> getContentEncodingHeader() const;
    KxHandle<KxSipContentTypeHeader> getContentTypeHeader() const;
    KxHandle<KxSipSessionExpiresHeader> getSessionExpiresHeader() const;
    KxHandle<KxSipSubjectHeader> getSubjectHeader() const;
    KxHandle<KxSipSupportedHeader> getSupportedHeader() const;

    /** Whether Supported, or Require, lists exactly this option tag. */
    bool isSupported(std::string_view optionTag) const;
    bool isRequired(std::string_view optionTag) const;

    /** Adds the header as the first of its kind, its own chain replaced by the others, or after the last, with its
        chain. A header that is part of no message is taken: the message owns it from now on, and its chain too where no
        value of that is part of a message (else the chain is cut off). The very object that is first of its kind here
        already changes nothing; of any other that is part of a message, this one or another, a copy of that one value is
        added. Nil changes nothing. */
    void addHeader(const KxHandle<KxSipHeader>& header, bool first);
    /** As addHeader, always with a copy of this one value. */
    void addSingleHeader(const KxHandle<KxSipHeader>& header, bool first);
    /** Takes out the first value of the header written under the name, letter case ignored; false when there is none.
        Whoever holds the value has it alone, without those that followed, and may add it again anywhere. */
    bool removeHeader(std::string_view name);

    /** Sets Content-Length, the body (copied) and Content-Type, in this order. A length of 0 leaves the old body where
        it is. Throws KxSipParseError, Content-Length being set already: "Can't build SIP request with NULL body
        pointer", "Can't build SIP request(with body) with no content-type". */
    void setBody(const void* body, const char* contentType, std::uint32_t length);
    void setBody(const char* body, const char* contentType);
    /** The bytes, a NUL behind them; null without a body. Holds until the body changes. */
    const char* getBody() const { return m_body.get(); }
    bool hasBody() const { return m_body != nullptr; }
    /** What Content-Length says, 0 without one; the bytes at getBody may be fewer. */
    std::uint32_t getBodyLength() const;
    /** How many bytes stand at getBody. */
    std::size_t getStoredBodyLength() const { return m_bodyStored; }
    /** The text of Content-Type without its parameters. */
    KxString getBodyType() const;

    unsigned getVersionHigh() const { return m_versionHigh; }
    unsigned getVersionLow() const { return m_versionLow; }
    const KxInetAddress& getConnectionAddress() const { return m_connectionAddress; }
    void setConnectionAddress(const KxInetAddress& address) { m_connectionAddress = address; }
    std::uint32_t getConnectionPort() const { return m_connectionPort; }
    void setConnectionPort(std::uint32_t port) { m_connectionPort = port; }
    const KxInetAddress& getLocalAddress() const { return m_localAddress; }
    void setLocalAddress(const KxInetAddress& address) { m_localAddress = address; }
    std::uint32_t getLocalPort() const { return m_localPort; }
    void setLocalPort(std::uint32_t port) { m_localPort = port; }
    KxSocketImpl::Transport getConnectionTransport() const { return m_connectionTransport; }
    void setConnectionTransport(KxSocketImpl::Transport transport) { m_connectionTransport = transport; }
    KxStatus getStatus() const { return m_status; }

    /** The text by which a request and its responses are known to belong together, made of To URI, From URI and tag,
        top Via, Call-ID and CSeq number; what is absent adds nothing. A To tag is no part of it.
        Throws KxException "Unable to create transaction key for INVALID SIP Message" for status 2. */
    KxString createKey() const;

    /** Writes the message for people: a line that says which way it went, over which transport, from or to where, then
        its text with plain line feeds, and a line feed. Null takes the port or address of the connection. `level` is
        not looked at. */
    void formatMessage(std::ostream& out, bool received, unsigned* port, KxInetAddress* address,
                       Oskan::LogLevel level) const;
    /** Logs what formatMessage writes as one event of source "KxSipMessage", line 179. Costs a test while the logger is
        not enabled for the level: nothing is serialised then. */
    void logMessage(Oskan::Logger& logger, bool received, unsigned* port, KxInetAddress* address,
                    Oskan::LogLevel level) const;

    KX_MEM_ACCOUNT_OPERATORS(s_account);

    /** Registers the message class M under its sMethodName; stands once in the class's .cpp, behind that name. M makes
        it a friend and has a default constructor. */
    template <class M>
    struct Registration {
        Registration() {
            sAddConstructor(M::sMethodName, []() -> KxSipMessage* { return new M; });
        }
    };

protected:
    /** Holds a message's lock while in scope; what is logged meanwhile is written after it is released. */
    class [[nodiscard]] Lock {
    public:
        explicit Lock(const KxSipMessage& message) : m_lock(*message.m_mutex) {}

    private:
        Oskan::LogDeferral m_deferral; // first, so that it ends last
        KxMutexLock m_lock;
    };

    KxSipMessage();
    /** A deep copy, under the other's lock; its status starts at 0. */
    KxSipMessage(const KxSipMessage& other);
    /** As above; the caller holds the other's lock, to copy its own fields under it too. */
    KxSipMessage(const KxSipMessage& other, const Lock& held);

    void parseHeaders(KxInputStream& in);
    void parseBody(KxInputStream& in);
    /** addHeader without the lock, while nobody else knows the message. */
    void asynchAddHeader(const KxHandle<KxSipHeader>& header, bool first);
    void asynchAddHeader(KxHandle<KxSipHeader>&& header, bool first);
    /** Into the empty slot of its kind, unchecked. */
    void addHeaderByID(const KxHandle<KxSipHeader>& header);
    /** Appends copies of the other's headers of a kind: of its first value, or of all in their order. Without locks. */
    void addCopyOf(const KxSipMessage& other, HeaderID id);
    void addCopiesOf(const KxSipMessage& other, HeaderID id);
    /** setBody or, for no body, a Content-Length of 0 where there is no Content-Length yet. */
    void setBodyOrNone(const void* body, const char* contentType, std::uint32_t length);
    /** Takes over address, port and transport of a connection: where the other came over TCP or TLS, what answers it
        goes back the same way. */
    void copyConnection(const KxSipMessage& other);
    /** Takes out all headers of the header's kind or, of unknown ones, of its name, letter case ignored. */
    void removeAllLike(const KxSipHeader& header);
    /** Makes the status 2 and throws KxException with the text. */
    [[noreturn]] void invalidate(std::string_view why);
    void setVersion(unsigned high, unsigned low);
    void setStatus(KxStatus status) { m_status = status; }

private:
    struct FreeBody {
        void operator()(char* bytes) const noexcept;
    };
    using BodyBytes = std::unique_ptr<char, FreeBody>; ///< A NUL stands behind them.

    template <class H>
    KxHandle<H> typed() const;
    template <class H>
    bool listsTag(std::string_view optionTag) const;
    KxHandle<KxSipHeader> findHeader(std::string_view name) const;
    KxHandle<KxSipHeader> ownOrCopy(const KxHandle<KxSipHeader>& header) const;
    void insert(KxHandle<KxSipHeader>&& header, bool first, const char* operation) {
        const KxSipHeader& value = *header; // someone holds it either way
        OSKAN_ASSERT(value.getHeaderID() < KxHeaderIDs::kCount);
        if (!m_headers.add(std::move(header), first)) {
            noteTwice(value, operation);
        }
    }
    void addRead(KxHandle<KxSipHeader>&& header);
    static void noteTwice(const KxSipHeader& header, const char* operation);
    void checkHeader(HeaderID id, std::string_view name, bool single);
    bool acceptsOwnBodyType() const;
    void noteFault(const char* what, const KxString& why);
    void readBody(KxInputStream& in, std::size_t length);
    static BodyBytes bodyOf(const void* bytes, std::size_t length);
    void serializeHeaders(KxOutputStream& out) const;
    void serializeBody(KxOutputStream& out) const;

    static Oskan::MemAccount s_account;

    KxMutex* const m_mutex;
    KxSipHeaderSlots m_headers;
    BodyBytes m_body;
    std::size_t m_bodyStored = 0;
    std::uint8_t m_versionHigh = 2;
    std::uint8_t m_versionLow = 0;
    KxStatus m_status = KX_STATUS_VALID;
    KxSocketImpl::Transport m_connectionTransport = KxSocketImpl::UDP;
    KxInetAddress m_connectionAddress;
    std::uint32_t m_connectionPort = 0;
    KxInetAddress m_localAddress;
    std::uint32_t m_localPort = 0;
};

/** Writes the message with plain line feeds, as it would be sent otherwise: CR stays where no LF follows. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxSipMessage& message);
/** As above; nothing for nil. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxHandle<KxSipMessage>& message);
/** Writes the bytes as they are; nothing for nil. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxHandle<KxByteArray>& bytes);
/** Writes the exception's own form, its message; nothing for nil. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxHandle<KxException>& failure);
