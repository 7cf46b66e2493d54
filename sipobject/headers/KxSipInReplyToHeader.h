#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** In-Reply-To: one Call-ID that the call refers to or returns an object.
    In-Reply-To = "In-Reply-To" HCOLON callid *(COMMA callid)                 [RFC 3261 20.21]
    A Call-ID ends at a comma or blank only; an empty one throws "Invalid In-Reply-To header".
    "In-Reply-To: 70710@h, <17320>@h" -> two values, two lines out */
class KX_SIP_API KxSipInReplyToHeader final : public KxSipTokenHeader<KxSipInReplyToHeader> {
public:
    explicit KxSipInReplyToHeader(const char* callId) : KxSipTokenHeader(callId) {}

    const KxString& getCallId() const { return m_value; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipInReplyToHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kInReplyTo;
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = "Invalid In-Reply-To header";

private:
    friend class KxSipHeaderOf<KxSipInReplyToHeader>;

    KxSipInReplyToHeader() = default;
};
