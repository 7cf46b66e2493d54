#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipText.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipMessage.h"

class KxSipAuthorizationHeader;
class KxSipDialog;
class KxSipResponse;
struct KxSipDialogParts;
struct KxSipRequestParts;

/** A SIP request: a message with a method and a Request-URI. [RFC 3261 7.1]
    Request-Line = Method SP Request-URI SP SIP-Version CRLF                  [RFC 3261 25.1]
    Only SIP/2.0 and the schemes "sip" and "tel" are accepted. The headers of a SIP Request-URI become headers and body
    of the request.

    A request is read by the parser, or built by sBuild or sWithin, which name the parts, or by a constructor. The
    constructors add From, To, Contact, Call-ID, CSeq and Content-Length (or the body with Content-Length and
    Content-Type) in this order, and nothing else: the caller adds Via and Max-Forwards. */
class KX_SIP_API KxSipRequest : public KxSipMessage {
public:
    /** Builds a request to the To URI. From, To and Contact are parsed by the header classes; a `contact` of null or ""
        adds no Contact. For a `callId` of null or "" and a `cseq` of 0, new values are generated. The body is copied;
        `contentType` is used only if there is a body.
        Throws KxException "The SIP Method cannot be NULL or EMPTY"; KxSipParseError for headers that can't be read, for
        a body without type or bytes (see setBody) and, as the other constructors, if there is no Request-URI. */
    KxSipRequest(const char* method, const char* from, const char* to, const char* contact, const char* callId,
                 std::uint32_t cseq, const char* contentType, const void* body, std::uint32_t bodyLength);
    /** As above, with existing headers, which the request then owns; nil headers are left out. */
    KxSipRequest(const char* method, const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                 const KxHandle<KxSipContactHeader>& contact, const char* callId, std::uint32_t cseq,
                 const char* contentType, const void* body, std::uint32_t bodyLength);
    /** As above, to a copy of the URI in the name-address. The headers of a SIP URL replace a From or To of the same
        name; they are added before Contact and the headers after it. */
    KxSipRequest(const char* method, const KxHandle<KxSipNameAddress>& requestUri,
                 const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                 const KxHandle<KxSipContactHeader>& contact, const char* callId, std::uint32_t cseq,
                 const char* contentType, const void* body, std::uint32_t bodyLength);
    /** As above, to a copy of the URI. */
    KxSipRequest(const char* method, const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                 const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact, const char* callId,
                 std::uint32_t cseq, const char* contentType, const void* body, std::uint32_t bodyLength);

    // The same with texts of any type. They throw KxSipParseError without a method, and for a body without a type.
    KxSipRequest(KxSipAnyText method, KxSipAnyText from, KxSipAnyText to, KxSipAnyText contact, KxSipAnyText callId,
                 std::uint32_t cseq, KxSipAnyText contentType, const void* body, std::uint32_t bodyLength)
        : KxSipRequest(method, KxMake<KxSipFromHeader>(from), KxMake<KxSipToHeader>(to),
                       contact.isNone() ? KxHandle<KxSipContactHeader>() : KxMake<KxSipContactHeader>(contact), callId,
                       cseq, contentType, body, bodyLength) {}
    KxSipRequest(KxSipAnyText method, const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                 const KxHandle<KxSipContactHeader>& contact, KxSipAnyText callId, std::uint32_t cseq,
                 KxSipAnyText contentType, const void* body, std::uint32_t bodyLength)
        : KxSipRequest(method.needed("method").c_str(), from, to, contact, callId.line().c_str(), cseq,
                       contentType.neededIf(bodyLength != 0, "Content-Type").c_str(), body, bodyLength) {}
    KxSipRequest(KxSipAnyText method, const KxHandle<KxSipNameAddress>& requestUri,
                 const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                 const KxHandle<KxSipContactHeader>& contact, KxSipAnyText callId, std::uint32_t cseq,
                 KxSipAnyText contentType, const void* body, std::uint32_t bodyLength)
        : KxSipRequest(method.needed("method").c_str(), requestUri, from, to, contact, callId.line().c_str(), cseq,
                       contentType.neededIf(bodyLength != 0, "Content-Type").c_str(), body, bodyLength) {}
    KxSipRequest(KxSipAnyText method, const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                 const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact, KxSipAnyText callId,
                 std::uint32_t cseq, KxSipAnyText contentType, const void* body, std::uint32_t bodyLength)
        : KxSipRequest(method.needed("method").c_str(), requestUri, from, to, contact, callId.line().c_str(), cseq,
                       contentType.neededIf(bodyLength != 0, "Content-Type").c_str(), body, bodyLength) {}

    /** A request outside a dialog, of the class of the method; see KxSipRequestParts, whose header is to be included.
        The classes of the methods have functions of the same names without `method`.
        Throws KxSipParseError for a method that is no token, and for parts that are missing or can't be read.
        [RFC 3261 8.1.1] */
    [[nodiscard]] static KxHandle<KxSipRequest> sBuild(KxSipText method, const KxSipRequestParts& parts);
    /** A request within a dialog, with its next CSeq number. Not for ACK and CANCEL, which have none of their own; see
        KxSipAckMessage::sFor and KxSipCancelMessage::sFor. Throws as sBuild; the dialog is then unchanged.
        [RFC 3261 12.2.1.1] */
    [[nodiscard]] static KxHandle<KxSipRequest> sWithin(KxSipDialog& dialog, KxSipText method,
                                                        const KxSipDialogParts& parts);

    [[nodiscard]] bool isRequest() const override;
    /** Whether the request is to be sent through the local outbound proxy. Always false except for an INVITE. */
    virtual bool useLocalOutboundProxy() const;
    /** Whether the status is 0 and the CSeq header has exactly the method of the request. */
    [[nodiscard]] bool isValid() const override;

    /** The method as given or received; valid as long as the request. */
    const char* getMethod() const { return m_Method.c_str(); }
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** Stores a copy of the URI (or nil) without angle brackets, under the lock of the message. */
    void setURI(const KxHandle<KxURI>& uri);
    /** The Request-URI as a SIP URL, shared; nil when there is no Request-URI. Aborts the process for any other
        Request-URI: for a received request, check getURI()->isSipURL() first. */
    KxHandle<KxSipURL> getURL() const;
    /** A new name-address with a copy of the Request-URI. */
    [[nodiscard]] KxHandle<KxSipNameAddress> getNameAddress() const;
    /** The host of a SIP Request-URI, an IPv6 address without brackets, and its port or the default port of its scheme
        and transport; else "" and 0. */
    const char* getRequestURIHost() const;
    std::uint32_t getRequestURIPort() const;

    /** The first Authorization, else the first Proxy-Authorization; nil when there is neither. */
    KxHandle<KxSipAuthorizationHeader> getAuthorizationHeader() const;

    /** Adds a Via before the others. Throws KxSipParseError for an unknown transport or an empty host. */
    void insertViaHeader(const char* host, unsigned port, const char* transport);
    void insertViaHeader(KxSipAnyText host, unsigned port, KxSipAnyText transport) {
        insertViaHeader(host.line().c_str(), port, transport.line().c_str());
    }

    /** Notes where a received request came from: in the connection of the message, and in its top Via, as
        KxSipViaHeader::setSource does. */
    void setSource(const KxInetAddress& address, std::uint32_t port, KxSocketImpl::Transport transport);

    /** The local address from which the application prefers to send the request; "" if none was set. A text that is not
        an address changes nothing. The returned pointer is valid until the next call of the setter. */
    void setPreferredIpAddr(const char* address);
    void setPreferredIpAddr(KxSipText address) { setPreferredIpAddr(address.line().c_str()); }
    const char* getPreferredIpAddrStr() const { return m_preferredIpAddrText.c_str(); }

    /** Whether Max-Forwards is 0 and the configuration parameter "tandril.sip.ignoreMaxForwards", which is read each
        time, is not true. A request without Max-Forwards is reported on the interoperability logger. */
    [[nodiscard]] bool tooManyHops() const;
    /** Whether the stack must refuse the request before the application sees it. Sets `code` to the status if that is
        not 0 (2 means that the message can't be used), to 483 for too many hops, to 414 for a Request-URI of 1024 or
        more characters, else to 0. */
    bool rejectedByStack(unsigned& code) const;

protected:
    /** For the parser: without method, URI and headers. */
    KxSipRequest();
    /** A deep copy, including the Request-URI, made under the other's lock. */
    KxSipRequest(const KxSipRequest& other);
    /** Without headers, and with a URI without scheme. Throws KxException "KxSipRequest constructor expects a Method
        Name" for an empty method. */
    explicit KxSipRequest(const KxString& method);

    // The steps to derive a request from another message. If that message lacks a part that a step needs, the step
    // throws KxSipParseError, so that no incomplete request is created.

    /** Appends copies of From and To. */
    void addPartiesOf(const KxSipMessage& parent);
    /** Appends a Call-ID with the same text, and a CSeq with this method and the number increased by `step`. */
    void addSequenceOf(const KxSipMessage& parent, std::uint32_t step);
    /** Sets the Request-URI to the SIP URL of the name-address. Throws KxSipParseError `otherwise` if there is none. */
    void setTarget(const KxHandle<KxSipNameAddress>& address, const char* otherwise);
    /** Sets the Request-URI to the Contact of the response if `contactCounts` and there is one, else to its To. */
    void setTargetOf(const KxSipMessage& response, bool contactCounts);
    /** Sets all that ACK and PRACK take from a response to an INVITE. Throws KxSipParseError `onlyInvite` for a
        response to another method. */
    void acknowledge(const KxHandle<KxSipResponse>& response, std::uint32_t step, const char* onlyInvite);
    /** Returns the object of the handle. Throws KxSipParseError `otherwise` if the handle is nil. */
    template <class T>
    static T& required(const KxHandle<T>& handle, const char* otherwise) {
        if (handle.isNil()) {
            KxSipParseError::sThrow(otherwise);
        }
        return *handle;
    }

    void serializeStartLine(KxOutputStream& out) const override;
    const KxString* methodForCSeq() const override;
    void parse(const char* token, KxInputStream& in) override;

private:
    friend class KxSipRequestBuilder;

    /** The arguments of the building constructors after the headers. */
    struct Content {
        const char* callId;
        std::uint32_t cseq;
        const char* contentType;
        const void* body;
        std::uint32_t bodyLength;
    };

    /** The stream is positioned after the method. Throws KxSipParseError: "Invalid Start-Line for SIP request: reached
        end of message looking for end-of-line", "Invalid Start-Line for SIP request: no CR before LF", "Invalid
        Start-Line for SIP request: does not contain 1 or 2 spaces", "Invalid Start-Line for SIP request", "Invalid
        SIP Version", "Invalid SIP URI", "Unsupported Uri Scheme", and the errors of the URI's class. */
    void parseStartLine(KxInputStream& in) override;

    KxSipRequest(const KxSipRequest& other, const Lock& held);
    static KxHandle<KxSipRequest> sEmpty(const KxString& method);
    void build(const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
               const KxHandle<KxURI>* requestUri, const KxHandle<KxSipContactHeader>& contact, const Content& content);
    const KxSipURL* sipURL() const;
    void stripSipURLHeaders();
    static KxHandle<KxSipHeader> headerFrom(const KxString& name, const KxString& value);
    static void stripBrackets(const KxHandle<KxURI>& uri);
    static KxString clearBrackets(const KxString& text);

    KxString m_Method;
    KxHandle<KxURI> m_URI;
    KxInetAddress m_PreferredIpAddr;
    KxString m_preferredIpAddrText; // the text of m_PreferredIpAddr, for the getter
};
