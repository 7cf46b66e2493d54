#pragma once

#include "sipobject/auth/KxSipCredentialsInfo.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "util/KxParameters.h"

#include <cstdint>
#include <string_view>

class KxURI;

/** The credentials of the Digest scheme, MD5 and MD5-sess, qop auth and auth-int, or none as in RFC 2069.
    digest-response = 1#( username / realm / nonce / digest-uri / response / [algorithm] / [cnonce] / [opaque] /
                          [message-qop] / [nonce-count] / [auth-param] )      [RFC 2617 3.2.2]
    A client makes them from a challenge and says what it asks for:

        KxSipDigestCredentialsInfo credentials(challenge, "bob", password);
        credentials.setMethod("REGISTER");
        credentials.setDigestURI(request->getURI());
        credentials.setQop("auth", cnonce, 1);

    A server takes them out of the header, says the method (and, for auth-int, the body) and validates. That the nonce is
    one of its own, and fresh, that the uri is the request's and the algorithm the one it offered, it has to see to
    itself: a stranger who may choose MD5-sess needs no password of a user (one of 256) whose raw digest begins with a
    zero byte.

    Deliberately otherwise than the RFC: an algorithm has to be named, and is compared with regard to case; the MD5-sess
    text ends in front of its first zero byte, though the raw digest it begins with may hold one; auth-int without a body
    has an empty digest of it.
    Read as KxSipDigestChallengeInfo is. Only the laid out properties are written, the password never is. */
class KX_SIP_API KxSipDigestCredentialsInfo final : public KxSipCredentialsInfo {
public:
    KxSipDigestCredentialsInfo() = default;
    /** In answer to a challenge, which must not be nil. Throws KxException "Unsupported Algorithm: Only MD5 is supported
        !!!" unless it names an algorithm that begins with "MD5". */
    KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge, const KxString& username,
                               const KxString& password);
    KxSipDigestCredentialsInfo* clone() const override;

    /** Reads new credentials from the properties; nil reads as no bytes. Throws what parse throws. */
    static KxHandle<KxSipDigestCredentialsInfo> sCreateFrom(const KxHandle<KxByteArray>& properties);

    /** Adds the properties of a text. Throws as KxSipDigestChallengeInfo's does. */
    void parse(KxInputStream& in);
    /** As parse, but what is wrong is told, not thrown. */
    KxSipFault read(KxInputStream& in);
    /** The response is the one that was received, else it is computed, and then throws as getRequestDigest, before
        anything is written. */
    void serialize(KxOutputStream& out) const override;

    /** Computes the response with these three in place of what the properties say (nil stands for empty, so that nothing
        that was received can stand in for it), and keeps them. Takes as long for a wrong response as for a right one.
        Throws as getRequestDigest. */
    bool validate(const KxString& username, const KxString& password, const KxString& realm) override;

    // The digests, 16 raw bytes each. They and setEntityBody throw KxException "Unsupported Algorithm: Only MD5 is
    // supported !!!" unless the algorithm begins with "MD5". [RFC 2617 3.2.2.1 to 3.2.2.3]
    KxHandle<KxByteArray> generateA1() const;
    KxHandle<KxByteArray> generateA2() const;
    KxHandle<KxByteArray> getRequestDigest() const;

    const char* getType() const override;
    /** These are nil when absent. */
    KxString getUsername() const override;
    KxString getPassword() const override;
    KxString getRealm() const override;
    KxString getNonce() const { return getProperty("nonce"); }
    /** Any property; letter case of the name is ignored. */
    KxString getProperty(std::string_view name) const { return m_properties.getValue(name); }

    // Nil sets the empty text.
    void setUsername(const KxString& username) override;
    void setPassword(const KxString& password) override;
    void setMethod(const KxString& method) { set("method", method); }
    void setNonce(const KxString& nonce) { set("nonce", nonce); }
    /** The printed form of the URI. */
    void setDigestURI(const KxHandle<KxURI>& uri);
    /** Only where the challenge's qop options hold the text qop ("auth" is also in "auth-int"); else changes nothing.
        The nonce count is written as eight hexadecimal digits. */
    void setQop(const KxString& qop, const KxString& cnonce, std::int32_t nc);
    /** Keeps the digest of a body, up to its NUL; of null and "", an empty text. */
    void setEntityBody(const char* body);

    /** The scheme, "Digest". */
    static const KxConstString sm_Type;

private:
    void set(std::string_view name, const KxString& value);

    KxParameters m_properties;
};
