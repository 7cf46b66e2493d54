#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** In-Reply-To: the Call-ID of a call that this call refers to or returns. One object per Call-ID.
    In-Reply-To = "In-Reply-To" HCOLON callid *(COMMA callid)                 [RFC 3261 20.21]
    A Call-ID ends only at a comma or blank; an empty one throws "Invalid In-Reply-To header".
    "In-Reply-To: 70710@h, <17320>@h" -> two values, written as two lines */
class KX_SIP_API KxSipInReplyToHeader final : public KxSipTokenHeader<KxSipInReplyToHeader> {
public:
    explicit KxSipInReplyToHeader(const char* callId) : KxSipTokenHeader(callId) {}
    explicit KxSipInReplyToHeader(KxSipText callId) : KxSipTokenHeader(callId) {}

    const KxString& getCallId() const { return m_value; }
    void setCallId(KxSipAnyText callId) { setTokenText(callId); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipInReplyToHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kInReplyTo;
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = "Invalid In-Reply-To header";

private:
    friend class KxSipHeaderOf<KxSipInReplyToHeader>;

    KxSipInReplyToHeader() = default;
};
