#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxSharedParameters.h"

/** Authentication-Info: what a server returns after a successful authentication.
    Authentication-Info = "Authentication-Info" HCOLON ainfo *(COMMA ainfo)   [RFC 3261 20.6, 25.1]
    The line is one value, read as KxSipPropertyScanner describes. No content is refused: a last property without name
    or value is dropped. Only nextnonce, rspauth, qop, nc and cnonce are written; nextnonce always is.
    In the RFC grammar a list that can't be read is refused, and all properties are written, and no others.
    `rspauth="x", nc=1, qop="auth"` -> `nextnonce="",rspauth="x",qop=auth,nc=1,cnonce=""` */
class KX_SIP_API KxSipAuthenticationInfoHeader final : public KxSipHeaderOf<KxSipAuthenticationInfoHeader> {
public:
    KxSipAuthenticationInfoHeader() = default;
    /** Reads the value; null reads as empty. */
    explicit KxSipAuthenticationInfoHeader(const char* text) { parseText(text); }
    explicit KxSipAuthenticationInfoHeader(KxSipText text) { parseText(text.checked()); }

    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    /** The getters return nil for what is absent. The setters throw KxSipParseError if the text is empty or contains
        CR, LF or NUL; it has no quotes around it. */
    KxString getNextnonce() const { return m_parameters.getValue("nextnonce"); }
    void setNextnonce(KxSipText nonce) { setProperty("nextnonce", nonce); }
    KxString getRspauth() const { return m_parameters.getValue("rspauth"); }
    void setRspauth(KxSipText response) { setProperty("rspauth", response); }
    KxString getQop() const { return m_parameters.getValue("qop"); }
    void setQop(KxSipText qop) { setProperty("qop", qop); }
    KxString getNc() const { return m_parameters.getValue("nc"); }
    void setNc(KxSipText count) { setProperty("nc", count); }
    KxString getCnonce() const { return m_parameters.getValue("cnonce"); }
    void setCnonce(KxSipText nonce) { setProperty("cnonce", nonce); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAuthenticationInfoHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAuthenticationInfo;

private:
    friend class KxSipHeaderOf<KxSipAuthenticationInfoHeader>;

    void setProperty(std::string_view name, KxSipText value) {
        m_parameters.write().setValue(name, value.needed(name));
    }
    KxSipFault parseValue(KxSipLine& line);
    void writeAll(KxOutputStream& out) const;
    void serializeValue(KxOutputStream& out) const;

    KxSharedParameters m_parameters;
};
