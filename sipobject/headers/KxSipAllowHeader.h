#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Allow: a method that the sender supports. One object per method; a comma-separated line becomes a chain.
    Allow = "Allow" HCOLON [Method *(COMMA Method)]                           [RFC 3261 20.5]
    An empty method is refused, and so is an empty list.
    "Allow: INVITE, ACK ,BYE" -> three values, written as three lines */
class KX_SIP_API KxSipAllowHeader final : public KxSipTokenHeader<KxSipAllowHeader> {
public:
    explicit KxSipAllowHeader(const char* method) : KxSipTokenHeader(method) {}
    explicit KxSipAllowHeader(KxSipText method) : KxSipTokenHeader(method) {}

    const KxString& getMethod() const { return m_value; }
    void setMethod(KxSipText method) { setTokenText(method); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAllowHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAllow;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Empty method in Allow header";
    static constexpr bool kIsTrimmed = true;

private:
    friend class KxSipHeaderOf<KxSipAllowHeader>;

    KxSipAllowHeader() = default;
};
