#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"

/** Response-Key: the key with which the response is to be encrypted.
    Response-Key = "Response-Key" ":" key-scheme 1*SP #key-param              [RFC 2543 6.34]
    key-param = token "=" ( token | quoted-string )
    The whole line is one value: commas, or ";", separate the parameters. A value without a scheme throws
    "Invalid Response-Key header"; in the RFC grammar also one whose parameters are not what KxParameters::parseExactly
    reads.      "Response-Key: pgp a=\"1,2\" , b=3" -> "Response-Key: pgp a=\"1,2\",b=3" */
class KX_SIP_API KxSipResponseKeyHeader final : public KxSipParameterHeader<KxSipResponseKeyHeader> {
public:
    explicit KxSipResponseKeyHeader(const KxString& scheme) : m_scheme(scheme) {}
    explicit KxSipResponseKeyHeader(KxSipStdText scheme) : KxSipResponseKeyHeader(scheme.needed("scheme")) {}

    const KxString& getScheme() const { return m_scheme; }
    /** Throws KxSipParseError if the text is empty or contains CR, LF or NUL. */
    void setScheme(KxSipText scheme) { m_scheme = scheme.needed("scheme"); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipResponseKeyHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kResponseKey;

private:
    friend class KxSipHeaderOf<KxSipResponseKeyHeader>;

    KxSipResponseKeyHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    KxSipFault parseStrictly(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxString m_scheme;
};
