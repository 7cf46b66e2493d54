#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Unsupported: an option tag that the server does not support. One object per tag; a comma-separated line becomes a
    chain.
    Unsupported = "Unsupported" HCOLON [option-tag *(COMMA option-tag)]       [RFC 3261 20.40]
    An empty tag is kept.      "Unsupported: foo" -> "Unsupported: foo" */
class KX_SIP_API KxSipUnsupportedHeader final : public KxSipTokenHeader<KxSipUnsupportedHeader> {
public:
    explicit KxSipUnsupportedHeader(const char* optionTag) : KxSipTokenHeader(optionTag) {}
    explicit KxSipUnsupportedHeader(KxSipText optionTag) : KxSipTokenHeader(optionTag) {}

    const KxString& getOptionTag() const { return m_value; }
    void setOptionTag(KxSipText optionTag) { setTokenText(optionTag); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipUnsupportedHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kUnsupported;
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = nullptr;

private:
    friend class KxSipHeaderOf<KxSipUnsupportedHeader>;

    KxSipUnsupportedHeader() = default;
};
