#pragma once

#include "sipobject/KxSipStdText.h"
#include "sipobject/auth/KxSipChallengeInfo.h"
#include "sipobject/headers/KxSipHeader.h"

class KxSipDigestChallengeInfo;

/** WWW-Authenticate and Proxy-Authenticate: the challenge that the client answers when it repeats the request.
    challenge = ("Digest" LWS digest-cln *(COMMA digest-cln))                 [RFC 3261 20.27, 20.44, 25.1]
    The line is one challenge, including its commas; the scheme ends at the first blank. Only Digest is accepted;
    in the RFC grammar other schemes are kept as text.
    `Digest realm="a", stale="TRUE"` -> `Digest realm="a",stale=TRUE` */
class KX_SIP_API KxSipAuthenticateHeader : public KxSipHeader {
public:
    /** Shares the challenge; nil is allowed and is written as an empty value. */
    KxSipAuthenticateHeader(const KxString& name, const KxHandle<KxSipChallengeInfo>& challenge);
    KxSipAuthenticateHeader(KxSipStdText name, const KxHandle<KxSipChallengeInfo>& challenge)
        : KxSipAuthenticateHeader(name.needed("header name"), challenge) {}
    /** Copies the challenge too, so that the two headers do not share it. */
    KxSipAuthenticateHeader(const KxSipAuthenticateHeader& other);
    ~KxSipAuthenticateHeader() override;

    /** The challenge itself, shared; nil if none was set. */
    const KxHandle<KxSipChallengeInfo>& getChallenge() const { return m_challenge; }
    /** The challenge itself, if it is of the Digest scheme; else nil. */
    [[nodiscard]] KxHandle<KxSipDigestChallengeInfo> getDigestChallenge() const;
    void setChallenge(const KxHandle<KxSipChallengeInfo>& challenge) { m_challenge = challenge; }
    /** The scheme of the challenge. The challenge must not be nil. */
    KxString getChallengeType() const { return m_challenge->getType(); }

protected:
    KxSipAuthenticateHeader(const KxString& name, HeaderID id) : KxSipHeader(name, id) {}

    /** Throws KxException as KxSipChallengeInfo::constructFrom does. */
    void doParse(KxInputStream& in) override;
    KxSipFault readValue(KxSipLine& line) override;
    void doSerialize(KxOutputStream& out) const override;

private:
    KxHandle<KxSipChallengeInfo> m_challenge;
};
