#pragma once

#include "sipobject/address/KxURI.h"
#include "sipobject/messages/KxSipMessage.h"

/** A SIP request: a message with a method and a Request-URI. [RFC 3261 7.1]
    Request-Line = Method SP Request-URI SP SIP-Version CRLF                  [RFC 3261 25.1]
    Only SIP/2.0 and the schemes "sip" and "tel" are taken; the headers of a SIP Request-URI become headers and body of
    the request. */
class KX_SIP_API KxSipRequest : public KxSipMessage {
public:
    bool isRequest() const override;

    /** The method as given or received; holds while the request does. */
    const char* getMethod() const { return m_Method.c_str(); }
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** Stores a copy of the URI (or nil) without its angle brackets, under the message's lock. */
    void setURI(const KxHandle<KxURI>& uri);

protected:
    /** For the parser: no method, no URI, no headers. */
    KxSipRequest();
    KxSipRequest(const KxSipRequest& other);
    /** Throws KxException "KxSipRequest constructor expects a Method Name" for an empty method. */
    explicit KxSipRequest(const KxString& method);

    void serializeStartLine(KxOutputStream& out) const override;
    void parse(const char* token, KxInputStream& in) override;

private:
    /** The stream stands behind the method. Throws KxSipParseError: "Invalid Start-Line for SIP request: reached end of
        message looking for end-of-line", "Invalid Start-Line for SIP request: no CR before LF", "Invalid Start-Line
        for SIP request: does not contain 1 or 2 spaces", "Invalid Start-Line for SIP request", "Invalid SIP Version",
        "Invalid SIP URI", "Unsupported Uri Scheme", and what the URI's class throws. */
    void parseStartLine(KxInputStream& in) override;

    void parseRequestLine(std::string_view line);
    void checkVersion(std::string_view version);
    void parseRequestURI(std::string_view text);
    [[noreturn]] void refuse(KxStatus status, const char* why);
    void stripSipURLHeaders();
    static KxHandle<KxSipHeader> headerFrom(const KxString& name, const KxString& value);
    void stripBrackets();
    static KxString clearBrackets(const KxString& text);

    KxString m_Method;
    KxHandle<KxURI> m_URI;
};
