#pragma once

#include "sipobject/address/KxSipURL.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipMessage.h"

class KxSipAuthorizationHeader;
class KxSipResponse;

/** A SIP request: a message with a method and a Request-URI. [RFC 3261 7.1]
    Request-Line = Method SP Request-URI SP SIP-Version CRLF                  [RFC 3261 25.1]
    Only SIP/2.0 and the schemes "sip" and "tel" are taken; the headers of a SIP Request-URI become headers and body of
    the request.

    A request is read by the parser or built whole. Building adds From, To, Contact, Call-ID, CSeq and Content-Length (or
    the body with Content-Length and Content-Type) in this order, and nothing else: Via and Max-Forwards are the
    caller's to add. */
class KX_SIP_API KxSipRequest : public KxSipMessage {
public:
    /** Builds a request to the To URI. From, To and Contact are read as the header classes read them; no Contact for
        null or "". A Call-ID of null or "" and a CSeq number of 0 stand for fresh ones. `contentType` is looked at where
        there is a body, which is copied.
        Throws KxException "The SIP Method cannot be NULL or EMPTY"; KxSipParseError for headers that can't be read, for
        a body without type or bytes (see setBody) and, here and below, where there is no Request-URI. */
    KxSipRequest(const char* method, const char* from, const char* to, const char* contact, const char* callId,
                 std::uint32_t cseq, const char* contentType, const void* body, std::uint32_t bodyLength);
    /** As above with ready headers, which the request owns from now on; nil ones are left out. */
    KxSipRequest(const char* method, const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                 const KxHandle<KxSipContactHeader>& contact, const char* callId, std::uint32_t cseq,
                 const char* contentType, const void* body, std::uint32_t bodyLength);
    /** As above, to a copy of the name-address's URI. The headers of a SIP URL replace From and To where they name
        them, and go into the request in front of those that follow. */
    KxSipRequest(const char* method, const KxHandle<KxSipNameAddress>& requestUri,
                 const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                 const KxHandle<KxSipContactHeader>& contact, const char* callId, std::uint32_t cseq,
                 const char* contentType, const void* body, std::uint32_t bodyLength);
    /** As above, to a copy of the URI. */
    KxSipRequest(const char* method, const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                 const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact, const char* callId,
                 std::uint32_t cseq, const char* contentType, const void* body, std::uint32_t bodyLength);

    bool isRequest() const override;
    /** Whether the request is to go through the local outbound proxy; only an INVITE may say so. */
    virtual bool useLocalOutboundProxy() const;
    /** Status 0 and a CSeq header that names exactly the method. */
    bool isValid() const override;

    /** The method as given or received; holds while the request does. */
    const char* getMethod() const { return m_Method.c_str(); }
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** Stores a copy of the URI (or nil) without its angle brackets, under the message's lock. */
    void setURI(const KxHandle<KxURI>& uri);
    /** The Request-URI as a SIP URL, shared; nil when there is none. It must be one: of a request that was received ask
        getURI()->isSipURL() first. */
    KxHandle<KxSipURL> getURL() const;
    /** A new name-address with a copy of the Request-URI. */
    KxHandle<KxSipNameAddress> getNameAddress() const;
    /** Of a SIP URL: its host, and its port or the default of its transport; else "" and 0. */
    const char* getRequestURIHost() const;
    std::uint32_t getRequestURIPort() const;

    /** The first Authorization, else the first Proxy-Authorization; nil when there is neither. */
    KxHandle<KxSipAuthorizationHeader> getAuthorizationHeader() const;

    /** Puts a Via in front of the others. Throws KxSipParseError for an unknown transport or an empty host. */
    void insertViaHeader(const char* host, unsigned port, const char* transport);

    /** The local address from which the application would like the request to be sent, "" for none. A text that is no
        address changes nothing. What is got holds until the next set. */
    void setPreferredIpAddr(const char* address);
    const char* getPreferredIpAddrStr() const { return m_preferredIpAddrText.c_str(); }

    /** Whether Max-Forwards is used up and the configuration parameter "tandril.sip.ignoreMaxForwards", read each time,
        does not say to ignore that. A request without Max-Forwards is noted on the interoperability logger. */
    bool tooManyHops() const;
    /** Whether the stack must refuse the request before anybody else sees it, and the code it does so with: the status
        where it is not 0 (2 stands for a message that can't be used), 483 for too many hops, 414 for a Request-URI of
        1024 characters and more; else 0. */
    bool rejectedByStack(unsigned& code) const;

protected:
    /** For the parser: no method, no URI, no headers. */
    KxSipRequest();
    /** A deep copy, Request-URI included, under the other's lock. */
    KxSipRequest(const KxSipRequest& other);
    /** No headers, and a URI without scheme. Throws KxException "KxSipRequest constructor expects a Method Name" for an
        empty method. */
    explicit KxSipRequest(const KxString& method);

    // The steps by which a request is derived from another message. What they need and can't find there throws
    // KxSipParseError, so that no half-built request comes into the world.

    /** Appends copies of From and To. */
    void addPartiesOf(const KxSipMessage& parent);
    /** Appends a new Call-ID of the same text and a new CSeq for this method, its number `step` further. */
    void addSequenceOf(const KxSipMessage& parent, std::uint32_t step);
    /** Goes to the SIP URL of the name-address; KxSipParseError with the text where there is none. */
    void setTarget(const KxHandle<KxSipNameAddress>& address, const char* otherwise);
    /** Goes to the Contact of the response, where `contactCounts` and there is one, else to its To. */
    void setTargetOf(const KxSipMessage& response, bool contactCounts);
    /** All that ACK and PRACK take from a response to an INVITE; KxSipParseError `onlyInvite` for any other response. */
    void acknowledge(const KxHandle<KxSipResponse>& response, std::uint32_t step, const char* onlyInvite);
    /** The handle's object, or KxSipParseError with the text. */
    template <class T>
    static T& required(const KxHandle<T>& handle, const char* otherwise) {
        if (handle.isNil()) {
            sRefuse(otherwise);
        }
        return *handle;
    }

    void serializeStartLine(KxOutputStream& out) const override;
    void checkCSeqMethod() override;
    void parse(const char* token, KxInputStream& in) override;

private:
    /** What the building constructors take behind the headers. */
    struct Content {
        const char* callId;
        std::uint32_t cseq;
        const char* contentType;
        const void* body;
        std::uint32_t bodyLength;
    };

    /** The stream stands behind the method. Throws KxSipParseError: "Invalid Start-Line for SIP request: reached end of
        message looking for end-of-line", "Invalid Start-Line for SIP request: no CR before LF", "Invalid Start-Line
        for SIP request: does not contain 1 or 2 spaces", "Invalid Start-Line for SIP request", "Invalid SIP Version",
        "Invalid SIP URI", "Unsupported Uri Scheme", and what the URI's class throws. */
    void parseStartLine(KxInputStream& in) override;

    KxSipRequest(const KxSipRequest& other, const Lock& held);
    static KxString checkedMethod(const char* method);
    [[noreturn]] static void sRefuse(const char* why);
    void build(const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
               const KxHandle<KxURI>* requestUri, const KxHandle<KxSipContactHeader>& contact, const Content& content);
    const KxSipURL* sipURL() const;
    void noteMissingMaxForwards() const;
    void parseRequestLine(std::string_view line);
    void checkVersion(std::string_view version);
    void parseRequestURI(std::string_view text);
    [[noreturn]] void refuse(KxStatus status, const char* why);
    void stripSipURLHeaders();
    static KxHandle<KxSipHeader> headerFrom(const KxString& name, const KxString& value);
    static void stripBrackets(const KxHandle<KxURI>& uri);
    static KxString clearBrackets(const KxString& text);

    KxString m_Method;
    KxHandle<KxURI> m_URI;
    KxInetAddress m_PreferredIpAddr;
    KxString m_preferredIpAddrText; // of m_PreferredIpAddr, for those who ask for a pointer
};
