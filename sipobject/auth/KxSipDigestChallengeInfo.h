#pragma once

#include "sipobject/KxSipStdText.h"
#include "sipobject/auth/KxSipChallengeInfo.h"
#include "util/KxParameters.h"

/** The challenge of the Digest scheme: named properties in the order in which they were first set.
    digest-challenge = 1#( realm / [domain] / nonce / [opaque] / [stale] / [algorithm] / [qop-options] / [auth-param] )
                                                                              [RFC 2617 3.2.1]
    Read as KxSipPropertyScanner describes, with at most 1024 characters of names and values; only the last property
    must have a value. algorithm, stale and uri are written without quotes, all other properties in quotes. In the RFC
    grammar uri is quoted too, and quotes and backslashes are escaped.
    `realm="a", stale="FALSE" , qop=auth` -> `realm="a",stale=FALSE,qop="auth"` */
class KX_SIP_API KxSipDigestChallengeInfo final : public KxSipChallengeInfo {
public:
    KxSipDigestChallengeInfo() = default;
    explicit KxSipDigestChallengeInfo(const KxString& realm);
    explicit KxSipDigestChallengeInfo(KxSipStdText realm) : KxSipDigestChallengeInfo(realm.line()) {}
    [[nodiscard]] KxSipDigestChallengeInfo* clone() const override;

    /** Returns a new challenge read from the properties; nil reads as empty. Throws as parse does. */
    static KxHandle<KxSipDigestChallengeInfo> sCreateFrom(const KxHandle<KxByteArray>& properties);

    /** Reads properties and adds them. Throws KxException "Buffer overflew !!!" for too many characters, "Failed to
        parse Proxy-Authenticate SIP header" if the last property has no name or no value, or there is no property. */
    void parse(KxInputStream& in);
    /** As parse, but returns the fault instead of throwing it. */
    KxSipFault read(KxInputStream& in);
    void serialize(KxOutputStream& out) const override;

    KxString getType() const override;
    /** These are nil when absent. */
    KxString getRealm() const override;
    KxString getDomain() const { return getProperty("domain"); }
    KxString getNonce() const { return getProperty("nonce"); }
    KxString getOpaque() const { return getProperty("opaque"); }
    KxString getURI() const { return getProperty("uri"); }
    KxString getQopOptions() const { return getProperty("qop"); }
    KxString getStale() const { return getProperty("stale"); }
    KxString getAlgorithm() const { return getProperty("algorithm"); }
    /** Any property; the letter case of its name is ignored. */
    KxString getProperty(std::string_view name) const { return m_properties.getValue(name); }

    /** A nil value changes nothing. */
    void setProperty(std::string_view name, const KxString& value) { m_properties.setValue(name, value); }
    void setProperty(std::string_view name, KxSipStdText value) {
        setProperty(KxSipText(name).checked().view(), value.line());
    }
    void setQopOptions(const KxString& value) { setProperty("qop", value); }
    void setQopOptions(KxSipStdText value) { setQopOptions(value.line()); }

    /** The scheme, "Digest". */
    static const KxConstString TYPE;

private:
    KxParameters m_properties;
};
