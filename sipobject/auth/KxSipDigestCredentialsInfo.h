#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/auth/KxSipCredentialsInfo.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "util/KxParameters.h"

#include <cstdint>
#include <string_view>

class KxURI;

/** The credentials of the Digest scheme: MD5 and MD5-sess, with qop auth, auth-int, or none as in RFC 2069.
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

    Differs from the RFC on purpose: an algorithm must be given, and is compared case-sensitively; the MD5-sess text
    ends before its first zero byte, although the raw digest at its start may contain one; for auth-int without a body,
    the digest of the body is an empty text.
    Read in the same way as KxSipDigestChallengeInfo. Only the properties of the grammar above are written, except
    auth-param; the password is never written. */
class KX_SIP_API KxSipDigestCredentialsInfo final : public KxSipCredentialsInfo {
public:
    KxSipDigestCredentialsInfo() = default;
    /** Creates the answer to a challenge, which must not be nil. Throws KxException "Unsupported Algorithm: Only MD5 is
        supported !!!" unless the challenge has an algorithm that begins with "MD5". */
    KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge, const KxString& username,
                               const KxString& password);
    template <class A, class B>
    requires(KxSipHasStdText<A, B>) KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge,
                                                               const A& username, const B& password)
        : KxSipDigestCredentialsInfo(challenge, KxSipAnyText(username).line(), KxSipAnyText(password).line()) {}
    [[nodiscard]] KxSipDigestCredentialsInfo* clone() const override;

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
        contained in "auth-int"); otherwise changes nothing. The nonce count is written as eight hexadecimal digits. */
    void setQop(const KxString& qop, const KxString& cnonce, std::int32_t nc);
    template <class A, class B>
    requires(KxSipHasStdText<A, B>) void setQop(const A& qop, const B& cnonce, std::int32_t nc) {
        setQop(KxSipAnyText(qop).line(), KxSipAnyText(cnonce).line(), nc);
    }
    /** Stores the digest of a body, which ends at its NUL; for null and "", an empty text. */
    void setEntityBody(const char* body);
    /** As above, of a body that may contain any byte. */
    void setEntityBody(std::string_view body);

    /** The scheme, "Digest". */
    static const KxConstString sm_Type;

private:
    void set(std::string_view name, const KxString& value);

    KxParameters m_properties;
};
