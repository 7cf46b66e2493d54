#pragma once

#include "sipobject/KxSipText.h"
#include "sipobject/auth/KxSipChallengeInfo.h"

/** The challenge of a scheme that the library does not compute, such as Basic or Bearer: the text after the scheme,
    kept as it is. Such challenges are only read in the RFC grammar. A host may build one in both grammars.
    challenge = auth-scheme [ 1*SP ( token68 / #auth-param ) ]                [RFC 7235 2.1]
    `Bearer realm="a", scope="b"` -> `Bearer realm="a", scope="b"` */
class KX_SIP_API KxSipOtherChallengeInfo final : public KxSipChallengeInfo {
public:
    /** Throws KxSipParseError if there is no scheme, or if a text contains CR, LF or NUL. */
    KxSipOtherChallengeInfo(const KxSipText& scheme, const KxSipText& text)
        : m_scheme(scheme.needed("scheme")), m_text(text.line()) {}
    [[nodiscard]] KxSipOtherChallengeInfo* clone() const override;

    void serialize(KxOutputStream& out) const override;
    KxString getType() const override { return m_scheme; }
    /** The realm of the text; nil if the text has none, or is no list of properties. */
    KxString getRealm() const override;
    /** The text after the scheme; nil if there is none. */
    const KxString& getText() const { return m_text; }

private:
    KxString m_scheme;
    KxString m_text;
};
