#pragma once

#include "sipobject/headers/KxSipTextHeader.h"

/** Server: the software of the user agent that sends the response.
    Server = "Server" HCOLON server-val *(LWS server-val)                     [RFC 3261 20.35]
    Products and comments are kept as one text.      "Server: Registrar/2.8.1 (build 7, east)" -> the same */
class KX_SIP_API KxSipServerHeader final : public KxSipTextHeader<KxSipServerHeader> {
public:
    explicit KxSipServerHeader(const KxString& server) : KxSipTextHeader(server) {}
    explicit KxSipServerHeader(KxSipStdText server) : KxSipTextHeader(server.line()) {}

    const KxString& getServer() const { return m_text; }
    void setServer(KxSipText server) { m_text = server.line(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipServerHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kServer;

private:
    friend class KxSipHeaderOf<KxSipServerHeader>;

    KxSipServerHeader() = default;
};
