#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/auth/KxSipCredentialsInfo.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "util/KxParameters.h"

#include <cstdint>
#include <string_view>

class KxURI;

/** The credentials of the Digest scheme: MD5 and MD5-sess, in the RFC grammar also SHA-256, SHA-512-256 and their
    "-sess" forms; with qop auth, auth-int, or none as in RFC 2069.
    digest-response = 1#( username / realm / nonce / digest-uri / response / [algorithm] / [cnonce] / [opaque] /
                          [message-qop] / [nonce-count] / [auth-param] )      [RFC 2617 3.2.2]
    A client creates them from a challenge and adds the details of its request:

        KxSipDigestCredentialsInfo credentials(challenge, "bob", password);
        credentials.setMethod("REGISTER");
        credentials.setDigestURI(request->getURI());
        credentials.setQop("auth", cnonce, 1);

    A server gets them from the header, sets the method (and, for auth-int, the body) and calls validate. The server
    itself must check that the nonce is its own and fresh, that the uri is that of the request, and that the algorithm
    is the one it offered: an attacker who may choose MD5-sess needs no password for a user whose raw digest begins with
    a zero byte (one user in 256).

    The classic grammar differs from the RFC on purpose: an algorithm must be given, and is compared case-sensitively;
    the MD5-sess text ends before its first zero byte, although the raw digest at its start may contain one; for
    auth-int without a body, the digest of the body is an empty text.
    Read in the same way as KxSipDigestChallengeInfo. Only the properties of the grammar above are written, except
    auth-param; the password is never written.

    In the RFC grammar none of this holds: no algorithm means MD5, the names of algorithms are compared ignoring letter
    case, A1 of a session is made from the digits of the first digest [RFC 7616 3.4.2], and auth-int without a body is
    computed with the digest of an empty text. All properties are written; received credentials without a response are
    written without one. The properties password, method, qopoptions and entity-body are only set by the host, never
    read. The digests are made of values without escapes. */
class KX_SIP_API KxSipDigestCredentialsInfo final : public KxSipCredentialsInfo {
public:
    KxSipDigestCredentialsInfo() = default;
    /** Creates the answer to a challenge, which must not be nil. Throws KxException "Unsupported Algorithm: Only MD5 is
        supported !!!" unless sCanAnswer. */
    KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge, const KxString& username,
                               const KxString& password);
    template <class A, class B>
    requires(KxSipHasStdText<A, B>) KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge,
                                                               const A& username, const B& password)
        : KxSipDigestCredentialsInfo(challenge, KxSipAnyText(username).line(), KxSipAnyText(password).line()) {}
    [[nodiscard]] KxSipDigestCredentialsInfo* clone() const override;

    /** Whether credentials can be created from the challenge: it is of the Digest scheme, with an algorithm that is
        supported. Nil can't be answered. Of several challenges of a realm a client should answer the topmost that it
        can [RFC 8760 2.4]:

            for (const auto& header : response->values<KxSipWWWAuthenticateHeader>()) {
                if (KxSipDigestCredentialsInfo::sCanAnswer(header.getChallenge())) { ... }
            } */
    static bool sCanAnswer(const KxHandle<KxSipChallengeInfo>& challenge);

    /** Returns new credentials read from the properties; nil reads as empty. Throws as parse does. */
    static KxHandle<KxSipDigestCredentialsInfo> sCreateFrom(const KxHandle<KxByteArray>& properties);

    /** Reads properties and adds them. Throws as KxSipDigestChallengeInfo::parse does. */
    void parse(KxInputStream& in);
    /** As parse, but returns the fault instead of throwing it. */
    KxSipFault read(KxInputStream& in);
    /** Writes the properties, without the scheme. Writes the received response if there is one; otherwise computes it,
        which throws as getRequestDigest does, before anything is written. */
    void serialize(KxOutputStream& out) const override;

    /** Stores the three values (nil as empty, so that no received value is used instead), computes the response with
        them, and returns whether it equals the received one. Takes as long for a wrong response as for a right one.
        Throws as getRequestDigest does. */
    bool validate(const KxString& username, const KxString& password, const KxString& realm) override;
    template <class A, class B, class C>
    requires(KxSipHasStdText<A, B, C>) bool validate(const A& username, const B& password, const C& realm) {
        return validate(KxSipAnyText(username).line(), KxSipAnyText(password).line(), KxSipAnyText(realm).line());
    }

    // The digests, 16 raw bytes each, 32 for the SHA family. They and setEntityBody throw KxException "Unsupported
    // Algorithm: Only MD5 is supported !!!" unless the algorithm is supported: in the classic grammar, one that begins
    // with "MD5". [RFC 2617 3.2.2.1 to 3.2.2.3, RFC 7616 3.4]
    KxHandle<KxByteArray> generateA1() const;
    KxHandle<KxByteArray> generateA2() const;
    KxHandle<KxByteArray> getRequestDigest() const;

    const char* getType() const override;
    /** These are nil when absent. */
    KxString getUsername() const override;
    KxString getPassword() const override;
    KxString getRealm() const override;
    KxString getNonce() const { return getProperty("nonce"); }
    /** Any property; the letter case of its name is ignored. */
    KxString getProperty(std::string_view name) const { return m_properties.getValue(name); }

    // A nil value is stored as an empty text.
    void setUsername(const KxString& username) override;
    void setUsername(KxSipStdText username) { setUsername(username.line()); }
    void setPassword(const KxString& password) override;
    void setPassword(KxSipStdText password) { setPassword(password.line()); }
    void setMethod(const KxString& method) { set("method", method); }
    void setMethod(KxSipStdText method) { setMethod(method.line()); }
    void setNonce(const KxString& nonce) { set("nonce", nonce); }
    void setNonce(KxSipStdText nonce) { setNonce(nonce.line()); }
    /** Stores the text of the URI. */
    void setDigestURI(const KxHandle<KxURI>& uri);
    /** Sets qop, cnonce and nonce count if the qop options of the challenge contain the text `qop` ("auth" is also
        contained in "auth-int", except in the RFC grammar); otherwise changes nothing. The nonce count is written as
        eight hexadecimal digits. */
    void setQop(const KxString& qop, const KxString& cnonce, std::int32_t nc);
    template <class A, class B>
    requires(KxSipHasStdText<A, B>) void setQop(const A& qop, const B& cnonce, std::int32_t nc) {
        setQop(KxSipAnyText(qop).line(), KxSipAnyText(cnonce).line(), nc);
    }
    /** Stores the digest of a body, which ends at its NUL; for null and "", an empty text, except in the RFC
        grammar. */
    void setEntityBody(const char* body);
    /** As above, of a body that may contain any byte. */
    void setEntityBody(std::string_view body);

    /** The scheme, "Digest". */
    static const KxConstString sm_Type;

private:
    static bool sSupports(const KxString& algorithm);
    void set(std::string_view name, const KxString& value);

    KxParameters m_properties;
};
