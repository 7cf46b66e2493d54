#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"

/** Call-ID: identifies the call.
    Call-ID = ( "Call-ID" / "i" ) HCOLON callid                               [RFC 3261 20.8]
    The value ends at white space only, so it may contain commas; an empty one throws "Invalid Call-ID header".
    "i: a84b4c76,66710@h" -> the same */
class KX_SIP_API KxSipCallIdHeader final : public KxSipHeaderOf<KxSipCallIdHeader> {
public:
    explicit KxSipCallIdHeader(const KxString& callId) : m_callId(callId) {}
    explicit KxSipCallIdHeader(KxSipStdText callId) : KxSipCallIdHeader(callId.needed("Call-ID")) {}

    const KxString& getCallId() const { return m_callId; }
    /** Throws KxSipParseError if the text is empty or contains CR, LF or NUL. */
    void setCallId(KxSipAnyText callId) { m_callId = callId.needed("Call-ID"); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipCallIdHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kCallId;

private:
    friend class KxSipHeaderOf<KxSipCallIdHeader>;

    KxSipCallIdHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxString m_callId;
};
