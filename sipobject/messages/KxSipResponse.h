#pragma once

#include "sipobject/messages/KxSipMessage.h"

/** A SIP response: a message with a status code and a reason phrase. [RFC 3261 7.2]
    Status-Line = SIP-Version SP Status-Code SP Reason-Phrase CRLF            [RFC 3261 25.1]
    Lenient: any version numbers and any code are taken, and kept. */
class KX_SIP_API KxSipResponse final : public KxSipMessage {
public:
    KxSipResponse(const KxSipResponse& other);
    KxSipResponse* clone() const override;

    bool isRequest() const override;

    std::uint32_t getStatusCode() const { return static_cast<std::uint32_t>(m_statusCode); }
    KxString getReasonPhrase() const { return m_reasonPhrase; }
    /** Under the message's lock; null reads as empty. */
    void setReasonPhrase(const char* phrase);

    /** The start token of a response, "SIP". */
    static const KxConstString sMethodName;

protected:
    void serializeStartLine(KxOutputStream& out) const override;
    /** The stream stands on the "/" behind "SIP". Throws KxSipParseError: "'.' expected in response start line",
        "unexpected end of response start line". */
    void parseStartLine(KxInputStream& in) override;

private:
    friend struct Registration<KxSipResponse>;

    KxSipResponse();

    std::int32_t m_statusCode = 0;
    KxString m_reasonPhrase;
};
