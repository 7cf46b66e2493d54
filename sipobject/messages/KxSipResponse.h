#pragma once

#include "sipobject/messages/KxSipRequest.h"

class KxSipAuthenticateHeader;
struct KxSipReading;
struct KxSipResponseParts;

/** A SIP response: a message with a status code and a reason phrase. [RFC 3261 7.2]
    Status-Line = SIP-Version SP Status-Code SP Reason-Phrase CRLF            [RFC 3261 25.1]
    Lenient: any version numbers and any code are accepted and kept. */
class KX_SIP_API KxSipResponse : public KxSipMessage {
public:
    /** Builds the response to a request: the standard reason phrase; copies of all Via headers, From, To, Call-ID and
        CSeq; the body, copied, or a Content-Length of 0; for 2xx, copies of all Record-Route headers. A response to BYE
        or CANCEL never has a body or Record-Route. No To tag is added. The response to a request that came over TCP or
        TLS uses the same connection. [RFC 3261 8.2.6]
        Throws KxSipParseError "Invalid Response code" outside 100 to 699, "Handle to request is NIL" and the errors of
        setBody; KxException, as checkValidity, for a request without the headers that a response needs. */
    KxSipResponse(int statusCode, const KxHandle<KxSipRequest>& request, const void* body, const char* contentType,
                  std::uint32_t bodyLength);
    KxSipResponse(int statusCode, const KxHandle<KxSipRequest>& request, const void* body, KxSipText contentType,
                  std::uint32_t bodyLength)
        : KxSipResponse(statusCode, request, body, contentType.neededIf(bodyLength != 0, "Content-Type").c_str(),
                        bodyLength) {}
    /** The response to a request; see KxSipResponseParts, whose header is to be included. It has the Via headers, From,
        To, Call-ID and CSeq of the request; a To tag, except in a 100; the Timestamp in a 100; the Record-Route headers
        from 101 to 299, except for BYE and CANCEL. It uses the connection of a request that came over TCP or TLS.
        [RFC 3261 8.2.6, 12.1.1]
        Throws KxSipParseError for an ACK, for a code outside 100 to 699, for parts that are missing or can't be read;
        and KxException, as checkValidity, for a request without the headers that a response needs. */
    [[nodiscard]] static KxHandle<KxSipResponse> sBuild(const KxSipRequest& request, const KxSipResponseParts& parts);
    KxSipResponse(const KxSipResponse& other);
    [[nodiscard]] KxSipResponse* clone() const override;

    [[nodiscard]] bool isRequest() const override;

    std::uint32_t getStatusCode() const { return static_cast<std::uint32_t>(m_statusCode); }
    KxString getReasonPhrase() const { return m_reasonPhrase; }
    /** Takes the lock of the message; null reads as empty. */
    void setReasonPhrase(const char* phrase);
    void setReasonPhrase(KxSipText phrase) { setReasonPhrase(phrase.line().c_str()); }

    /** The first WWW-Authenticate, else the first Proxy-Authenticate; nil when there is neither. In the RFC grammar,
        the topmost that KxSipDigestCredentialsInfo::sCanAnswer comes before the others of these. [RFC 8760 2.4] */
    KxHandle<KxSipAuthenticateHeader> getAuthenticateHeader() const;

    /** Remove all headers written under the full name, ignoring letter case. A Via received as "v" is kept. */
    void removeViaHeader();
    void removeRecordRouteHeader();

    /** The standard reason phrase of a status code, as the constructor sets it. It lives as long as the process. */
    static const char* sPhraseOf(int statusCode);

    /** The start token of a response, "SIP". */
    static const KxConstString sMethodName;

protected:
    void serializeStartLine(KxOutputStream& out) const override;
    /** The stream is positioned at the "/" after "SIP". Throws KxSipParseError: "'.' expected in response start line",
        "unexpected end of response start line". */
    void parseStartLine(KxInputStream& in) override;

private:
    friend struct Registration<KxSipResponse>;
    friend struct KxSipReading; // answers requests that lack headers

    KxSipResponse();
    KxSipResponse(const KxSipResponse& other, const Lock& held);
    void answer(int statusCode, const KxSipRequest& request);
    void addToTag(const KxSipText& tag);

    std::int32_t m_statusCode = 0;
    KxString m_reasonPhrase;
};
