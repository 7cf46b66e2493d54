#pragma once

#include "sipobject/auth/KxSipChallengeInfo.h"
#include "sipobject/headers/KxSipHeader.h"

/** WWW-Authenticate and Proxy-Authenticate: the challenge that a request has to be repeated with an answer to.
    challenge = ("Digest" LWS digest-cln *(COMMA digest-cln))                 [RFC 3261 20.27, 20.44, 25.1]
    The line is one challenge, commas included; the scheme ends at the first blank. A scheme other than Digest is refused.
    `Digest realm="a", stale="TRUE"` -> `Digest realm="a",stale=TRUE` */
class KX_SIP_API KxSipAuthenticateHeader : public KxSipHeader {
public:
    /** Shares the challenge; nil is allowed and written as nothing. */
    KxSipAuthenticateHeader(const KxString& name, const KxHandle<KxSipChallengeInfo>& challenge);
    /** Copies the challenge, so that each header's is changed by itself. */
    KxSipAuthenticateHeader(const KxSipAuthenticateHeader& other);
    ~KxSipAuthenticateHeader() override;

    /** The challenge itself, shared; nil where none was set. */
    const KxHandle<KxSipChallengeInfo>& getChallenge() const { return m_challenge; }
    void setChallenge(const KxHandle<KxSipChallengeInfo>& challenge) { m_challenge = challenge; }
    /** The scheme of the challenge, which must be there. */
    KxString getChallengeType() const { return m_challenge->getType(); }

protected:
    KxSipAuthenticateHeader(const KxString& name, HeaderID id) : KxSipHeader(name, id) {}

    /** Throws KxException, as KxSipChallengeInfo::constructFrom. */
    void doParse(KxInputStream& in) override;
    KxSipFault readValue(KxInputStream& in) override;
    void doSerialize(KxOutputStream& out) const override;

private:
    KxHandle<KxSipChallengeInfo> m_challenge;
};
