#pragma once

#include "sipobject/headers/KxSipTextHeader.h"

/** User-Agent: the software of the user agent that sends the request.
    User-Agent = "User-Agent" HCOLON server-val *(LWS server-val)             [RFC 3261 20.41]
    Products and comments are kept as one text.      "User-Agent: Softclient 11.7 (build 2231)" -> the same */
class KX_SIP_API KxSipUserAgentHeader final : public KxSipTextHeader<KxSipUserAgentHeader> {
public:
    explicit KxSipUserAgentHeader(const KxString& userAgent) : KxSipTextHeader(userAgent) {}
    explicit KxSipUserAgentHeader(KxSipStdText userAgent) : KxSipTextHeader(userAgent.line()) {}

    const KxString& getUserAgent() const { return m_text; }
    void setUserAgent(KxSipText userAgent) { m_text = userAgent.line(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipUserAgentHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kUserAgent;

private:
    friend class KxSipHeaderOf<KxSipUserAgentHeader>;

    KxSipUserAgentHeader() = default;
};
