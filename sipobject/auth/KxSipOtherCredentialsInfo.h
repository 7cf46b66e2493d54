#pragma once

#include "sipobject/KxSipText.h"
#include "sipobject/auth/KxSipCredentialsInfo.h"

/** The credentials of a scheme that the library does not compute, such as Basic or Bearer: the text after the scheme,
    kept as it is. Such credentials are only read in the RFC grammar. A host may build them in both grammars.
    credentials = auth-scheme [ 1*SP ( token68 / #auth-param ) ]              [RFC 7235 2.1]
    `Basic dTpw` -> `Basic dTpw` */
class KX_SIP_API KxSipOtherCredentialsInfo final : public KxSipCredentialsInfo {
public:
    /** Throws KxSipParseError if there is no scheme, or if a text contains CR, LF or NUL. */
    KxSipOtherCredentialsInfo(const KxSipText& scheme, const KxSipText& text)
        : m_scheme(scheme.needed("scheme")), m_text(text.line()) {}
    [[nodiscard]] KxSipOtherCredentialsInfo* clone() const override;

    /** Returns false: only the host can tell. */
    bool validate(const KxString& username, const KxString& password, const KxString& realm) override;
    void serialize(KxOutputStream& out) const override;
    // These are nil; the text may contain them in a form of its own.
    KxString getUsername() const override { return {}; }
    KxString getPassword() const override { return {}; }
    KxString getRealm() const override { return {}; }
    const char* getType() const override { return m_scheme.c_str(); }
    /** The text after the scheme; nil if there is none. */
    const KxString& getText() const { return m_text; }

private:
    void setUsername(const KxString& username) override;
    void setPassword(const KxString& password) override;

    KxString m_scheme;
    KxString m_text;
};
