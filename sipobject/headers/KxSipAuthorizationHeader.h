#pragma once

#include "sipobject/auth/KxSipCredentialsInfo.h"
#include "sipobject/headers/KxSipHeaderOf.h"

class KxSipDigestCredentialsInfo;

/** Authorization: the credentials of a user agent.
    Authorization = "Authorization" HCOLON ("Digest" LWS digest-response)     [RFC 3261 20.7, 25.1]
    The line is one set of credentials, including commas; the scheme ends at the first blank. Only Digest is accepted;
    in the RFC grammar other schemes are kept as text.
    Writing throws KxException if the response has to be computed and the algorithm is not supported.
    `Digest username="u", response="r", qop=auth` ->
    `Digest username="u",realm="",nonce="",response="r",uri="",qop="auth",nc=,cnonce=""` */
class KX_SIP_API KxSipAuthorizationHeader : public KxSipHeaderOf<KxSipAuthorizationHeader> {
public:
    /** Both share the credentials; nil is allowed and is written as an empty value. */
    explicit KxSipAuthorizationHeader(const KxHandle<KxSipCredentialsInfo>& credentials);
    KxSipAuthorizationHeader(const KxString& name, const KxHandle<KxSipCredentialsInfo>& credentials);
    KxSipAuthorizationHeader(KxSipStdText name, const KxHandle<KxSipCredentialsInfo>& credentials)
        : KxSipAuthorizationHeader(name.needed("header name"), credentials) {}
    /** Copies the credentials too, so that the two headers do not share them. */
    KxSipAuthorizationHeader(const KxSipAuthorizationHeader& other);
    ~KxSipAuthorizationHeader() override;

    /** The credentials themselves, shared; nil if none were given. */
    const KxHandle<KxSipCredentialsInfo>& getCredentials() const { return m_credentials; }
    /** The credentials themselves, if they are of the Digest scheme; else nil. */
    [[nodiscard]] KxHandle<KxSipDigestCredentialsInfo> getDigestCredentials() const;
    /** The scheme of the credentials. The credentials must not be nil. */
    KxString getAuthenticationType() const { return m_credentials->getType(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAuthorizationHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAuthorization;

protected:
    KxSipAuthorizationHeader() = default;
    explicit KxSipAuthorizationHeader(const KxString& name) : KxSipAuthorizationHeader(name, kHeaderID) {}
    KxSipAuthorizationHeader(const KxString& name, HeaderID id) : KxSipHeaderOf(name, id) {}

    void setCredentials(const KxHandle<KxSipCredentialsInfo>& credentials) { m_credentials = credentials; }

private:
    friend class KxSipHeaderOf<KxSipAuthorizationHeader>;

    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxHandle<KxSipCredentialsInfo> m_credentials;
};
