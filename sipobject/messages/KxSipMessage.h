#pragma once

#include "core/LogDeferral.h"
#include "core/LogLevel.h"
#include "sipobject/KxSipText.h"
#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/messages/KxSipBody.h"
#include "sipobject/messages/KxSipHeaderSlots.h"
#include "sipobject/messages/KxSipMessageFormat.h"
#include "sipobject/messages/KxSipNamedValues.h"
#include "sipobject/messages/KxSipValues.h"
#include "sipobject/messages/KxStatus.h"
#include "util/KxInetAddress.h"
#include "util/KxMutex.h"
#include "util/KxSocketImpl.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Oskan {
class Logger;
}
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

/** A SIP message: its headers by kind, its body, its version, and its source or destination. Requests and responses add
    their start lines. [RFC 3261 7]

    Headers of one kind form a chain that starts at the first one. Kinds are written in the order in which they were
    first added, one line per value. A message owns its headers: no header object is in two messages, and a copy of a
    message shares no data with it that can be changed.

    Threads: adding, looking up and removing headers, setBody, serialize and copying from a message take its lock and
    may run on several threads at once; the typed getters, getHeaderByID and the plain accessors do not lock. A header
    object is used by one thread at a time. Log events that occur under the lock are written after it is released, so a
    log appender may call the message. */
class KX_SIP_API KxSipMessage : public KxObject {
public:
    /** Creates an empty message of a class. */
    using Creator = KxSipMessage* (*)();

    ~KxSipMessage() override;

    /** Whether the status is 0. Derived classes add conditions. */
    [[nodiscard]] virtual bool isValid() const { return m_status == KX_STATUS_VALID; }
    virtual bool isRequest() const = 0;

protected:
    /** Writes the start line, including its line end. */
    virtual void serializeStartLine(KxOutputStream& out) const = 0;
    /** Reads the message after its first token; see sConstructFrom. */
    virtual void parse(const char* token, KxInputStream& in);
    /** Checks that Via, From, To, CSeq, Content-Length and Call-ID are present, that each except Via occurs once, that
        the CSeq method is the method of the request, and that a body has a Content-Type. The first failure sets the
        status to 2 and throws KxException "missing Via header", "multiple To headers detected", "invalid method in CSeq
        header (got=...", "SIP Message has body but no Content-Type header" and the like. [RFC 3261 8.1.1, 20] */
    virtual void checkValidity();
    /** The method that CSeq must name, ignoring letter case; null if that is not checked. */
    virtual const KxString* methodForCSeq() const { return nullptr; }
    /** Reads the rest of the start line, including its line end. Throws KxSipParseError. */
    virtual void parseStartLine(KxInputStream& in) = 0;

public:
    bool isResponse() const { return !isRequest(); }
    /** The message as an object of the class M, such as KxSipRequest or KxSipInviteMessage; null if it is of another
        class. */
    template <class M>
    [[nodiscard]] M* as() {
        return dynamic_cast<M*>(this);
    }
    template <class M>
    [[nodiscard]] const M* as() const {
        return dynamic_cast<const M*>(this);
    }

    /** Reads and returns one message. A header line that can't be read is dropped, and the status becomes 1; a body
        type that the message's own Accept does not list makes the status 2. Bytes after the body stay unread; without
        a Content-Length the rest of the stream is the body.
        In the RFC grammar each value that can't be read is kept as text, see KxSipUnreadHeader. But if proxies work
        with the header, its error is thrown [RFC 3261 16.3]; and for more than 1000 lines with such values,
        KxSipParseError "Too many header lines can't be read".
        Throws the errors of checkValidity, if the status is still 0 after reading; KxSipParseKeepAliveException if the
        stream starts with white space or "/"; KxSipParseError "SIP Method Token Expected" for an empty stream,
        "message body is shorter than Content-Length", and the errors of parseStartLine. [RFC 3261 7, 18.3] */
    static KxHandle<KxSipMessage> sConstructFrom(KxInputStream& in);
    /** Registers the class of a start token, which is case-sensitive. The first registration of a token is kept. For
        static initialisers. */
    static void sAddConstructor(const KxString& token, Creator creator);

    /** Writes the start line, the headers, an empty line and the body, of which at most Content-Length bytes; then
        flushes the stream. */
    void serialize(KxOutputStream& out) const;
    /** The bytes that serialize writes. */
    [[nodiscard]] std::string getText() const;
    void display(KxOutputStream& out, bool verbose) const override;

    /** The first header of a kind; nil when there is none. Does not lock.
        @param id below KxHeaderIDs::kCount, or from KxSipHeader::sNewHeaderID; any other number aborts the process. */
    const KxHandle<KxSipHeader>& getHeaderByID(HeaderID id) const { return m_headers.first(id); }
    /** The kinds of header in this message, in the order in which serialize writes them. */
    std::vector<HeaderID> getHeaderOrder() const;
    /** The kind whose first header is written under the name, ignoring letter case; KxHeaderIDs::kUnknown if there is
        none. In the RFC grammar also the kind whose full or compact name it is. Does not lock. */
    HeaderID mTokenToID(std::string_view name) const;
    /** The first header written under the name, ignoring letter case; so a header received under its compact name is
        not found by its full name. For unregistered names, the first header with exactly that name. Nil when there is
        none. In the RFC grammar it is the first header with that name in any letter case, full or compact. getNext
        continues from the returned header. */
    KxHandle<KxSipHeader> getHeader(std::string_view name) const;

    /** All values of a header class: for (KxSipContactHeader& contact : message->values<KxSipContactHeader>()). A const
        message gives const values. This function and the next two do not lock. */
    template <class H>
    KxSipValues<H> values() {
        return KxSipValues<H>(getHeaderByID(H::kHeaderID).get());
    }
    template <class H>
    KxSipValues<const H> values() const {
        return KxSipValues<const H>(getHeaderByID(H::kHeaderID).get());
    }
    /** The first value of the class, which the message owns; null if there is none. */
    template <class H>
    [[nodiscard]] H* first() {
        return has<H>() ? &*values<H>().begin() : nullptr;
    }
    template <class H>
    [[nodiscard]] const H* first() const {
        return has<H>() ? &*values<H>().begin() : nullptr;
    }
    template <class H>
    [[nodiscard]] bool has() const {
        return !values<H>().empty();
    }
    /** Removes the first header of the kind of H, or all of them, under whatever names they were received. Returns how
        many were removed. */
    template <class H>
    std::size_t removeFirst() {
        return removeByID(H::kHeaderID, 1);
    }
    template <class H>
    std::size_t removeAll() {
        return removeByID(H::kHeaderID, static_cast<std::size_t>(-1));
    }
    /** Removes all headers of the kind of H, and adds the given one, with its chain, in their place in the order; if
        there were none, at the end. For the ownership of the header see addHeader. Nil changes nothing. */
    template <class H>
    void replace(const KxHandle<H>& header) {
        replaceByID(header);
    }

    /** All headers of a name, in any letter case, full or compact: for (KxSipHeader& header : m->valuesNamed("x-foo")).
        If a class is registered for the name, these are all values of the class, under whatever names they were
        received. Other names: the headers that are written under it, those with a class first. A const message gives
        const headers. This function, its iterators and the next three functions take the lock. */
    KxSipNamedValues<KxSipHeader> valuesNamed(std::string_view name) { return {*this, findNamed(name)}; }
    KxSipNamedValues<const KxSipHeader> valuesNamed(std::string_view name) const { return {*this, findNamed(name)}; }
    /** The first of them, which the message owns; null if there is none. */
    [[nodiscard]] KxSipHeader* firstNamed(std::string_view name) { return findNamed(name).first; }
    [[nodiscard]] const KxSipHeader* firstNamed(std::string_view name) const { return findNamed(name).first; }
    [[nodiscard]] bool hasNamed(std::string_view name) const { return findNamed(name).first != nullptr; }
    /** Removes all of them, and returns how many were removed. */
    std::size_t removeAllNamed(std::string_view name);

    /** The first header of its kind; nil when there is none. */
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

    /** Whether Supported (or Require) lists exactly this option tag, when it is written under its full name. In the RFC
        grammar the name and the letter case do not matter. */
    [[nodiscard]] bool isSupported(std::string_view optionTag) const;
    [[nodiscard]] bool isRequired(std::string_view optionTag) const;

    /** Whether one of the headers of class H lists the option tag, under whatever name they were received; ignores
        letter case: message->lists<KxSipSupportedHeader>("100rel"). Does not lock. [RFC 3261 19.2] */
    template <class H>
    [[nodiscard]] bool lists(std::string_view optionTag) const {
        for (const H& value : values<H>()) {
            if (value.getOptionTag().equalsNoCase(optionTag)) {
                return true;
            }
        }
        return false;
    }

    /** Adds the header as the first of its kind (existing values then replace its own chain), or after the last one,
        with its chain. The message takes ownership of a header that is part of no message, and of its chain if no value
        of that is part of a message; otherwise the chain is cut off. Of a header that is part of a message, this one or
        another, a copy of that one value is added. Nil, and the object that is already first of its kind here, change
        nothing. */
    void addHeader(const KxHandle<KxSipHeader>& header, bool first);
    /** As addHeader, but always adds a copy of this one value. */
    void addSingleHeader(const KxHandle<KxSipHeader>& header, bool first);
    /** Removes the first value of the header written under the name, ignoring letter case (in the RFC grammar also
        under its other name); returns false if there is none. A caller that still holds the value holds it without the
        values that followed it, and may add it to any message. */
    bool removeHeader(std::string_view name);

    /** Sets Content-Length, the body (copied) and Content-Type, in this order. A length of 0 leaves the old body in
        place. Throws KxSipParseError "Can't build SIP request with NULL body pointer" and "Can't build SIP request(with
        body) with no content-type"; Content-Length is then already set. */
    void setBody(const void* body, const char* contentType, std::uint32_t length);
    void setBody(const char* body, const char* contentType);
    /** As above, for a body that may contain any byte. An empty one removes the body and its Content-Type, and sets a
        Content-Length of 0. Throws KxSipParseError, and changes nothing, for a body without content type or of 4 GB or
        more. */
    void setBody(std::string_view body, KxSipText contentType);
    /** The bytes, followed by a NUL; null without a body. Valid until the body changes. */
    const char* getBody() const { return m_body.bytes(); }
    [[nodiscard]] bool hasBody() const { return m_body.bytes() != nullptr; }
    /** The value of Content-Length, or 0 without one. getBody may have fewer bytes. */
    std::uint32_t getBodyLength() const;
    /** The number of bytes at getBody. */
    std::size_t getStoredBodyLength() const { return m_body.length(); }
    /** The media type in Content-Type, without parameters; empty without Content-Type. */
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

    /** Returns the transaction key, which is the same for a request and its responses. It consists of To URI, From URI
        and tag, top Via, Call-ID and CSeq number; absent parts are left out. The To tag is not included.
        Throws KxException "Unable to create transaction key for INVALID SIP Message" for status 2. */
    [[nodiscard]] KxString createKey() const;

    /** Writes the message in readable form: a line with the direction, the transport and the peer, then the text of the
        message with LF line ends, and an LF. A null port or address is replaced by that of the connection. `level`
        is ignored. */
    void formatMessage(std::ostream& out, bool received, unsigned* port, KxInetAddress* address,
                       Oskan::LogLevel level) const;
    /** Logs the output of formatMessage as one event of source "KxSipMessage", line 179. If the logger is not enabled
        for the level, nothing is serialised. */
    void logMessage(Oskan::Logger& logger, bool received, unsigned* port, KxInetAddress* address,
                    Oskan::LogLevel level) const;

    KX_MEM_ACCOUNT_OPERATORS(s_account);

    /** Registers the message class M under its sMethodName. The .cpp file of M defines one such object, after
        sMethodName. M makes it a friend and has a default constructor. */
    template <class M>
    struct Registration {
        Registration() {
            sAddConstructor(M::sMethodName, []() -> KxSipMessage* { return sMake(); });
        }
        /** An empty message. */
        static M* sMake() { return new M; }
    };

protected:
    /** Holds the lock of a message while in scope. Events logged during that time are written after its release. */
    class [[nodiscard]] Lock {
    public:
        explicit Lock(const KxSipMessage& message) : m_lock(*message.m_mutex) {}

    private:
        Oskan::LogDeferral m_deferral; // first, so that it is destroyed last
        std::lock_guard<KxMutex> m_lock;
    };

    KxSipMessage();
    /** A deep copy, made under the other's lock; its status is 0. */
    KxSipMessage(const KxSipMessage& other);
    /** As above; the caller holds the other's lock, so that derived classes copy their fields under it too. */
    KxSipMessage(const KxSipMessage& other, const Lock& held);

    void parseHeaders(KxInputStream& in);
    void parseBody(KxInputStream& in);
    /** addHeader without the lock, while no other thread can access the message. */
    void asynchAddHeader(KxHandle<KxSipHeader> header, bool first);
    /** Adds the header to the slot of its kind, which must be empty; not checked. */
    void addHeaderByID(const KxHandle<KxSipHeader>& header);
    /** The first value of a kind that was read, so is no KxSipUnreadHeader; nil when there is none. Does not lock. */
    const KxHandle<KxSipHeader>& firstRead(HeaderID id) const { return m_headers.firstRead(id); }
    /** Appends copies of the other's headers of a kind: the first value, or all values in order. Does not lock. */
    void addCopyOf(const KxSipMessage& other, HeaderID id);
    void addCopiesOf(const KxSipMessage& other, HeaderID id);
    /** As setBody. For a length of 0, adds a Content-Length of 0, or sets a present one to the stored body length. */
    void setBodyOrNone(const void* body, const char* contentType, std::uint32_t length);
    /** Copies address, port and transport of the other's connection if the other came over TCP or TLS, so that the
        answer to it uses the same connection. */
    void copyConnection(const KxSipMessage& other);
    /** Removes all headers of the header's kind; for an unknown header, all with its name. */
    void removeAllLike(const KxSipHeader& header);
    void setVersion(unsigned high, unsigned low) {
        m_versionHigh = static_cast<std::uint8_t>(high);
        m_versionLow = static_cast<std::uint8_t>(low);
    }
    void setStatus(KxStatus status) { m_status = status; }

private:
    friend class KxSipMessageReader; // fills every field
    friend class KxSipRequestBuilder;
    template <class H>
    friend class KxSipNamedValues;

    KxSipHeaderSlots::Named findNamed(std::string_view name) const;
    KxSipHeader* nextNamed(const KxSipHeader& header) const;
    std::size_t removeByID(HeaderID id, std::size_t atMost);
    void replaceByID(KxHandle<KxSipHeader> header);
    template <class H>
    bool listsTag(std::string_view optionTag) const;
    void adopt(KxHandle<KxSipHeader>&& copies);

    static Oskan::MemAccount s_account;

    KxMutex* const m_mutex;
    KxSipHeaderSlots m_headers;
    KxSipBody m_body;
    std::uint8_t m_versionHigh = 2;
    std::uint8_t m_versionLow = 0;
    KxStatus m_status = KX_STATUS_VALID;
    KxSocketImpl::Transport m_connectionTransport = KxSocketImpl::UDP;
    KxInetAddress m_connectionAddress;
    std::uint32_t m_connectionPort = 0;
    KxInetAddress m_localAddress;
    std::uint32_t m_localPort = 0;
};
