#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Require: an option tag that the recipient must support. One object per tag; a comma-separated line becomes a chain.
    Require = "Require" HCOLON option-tag *(COMMA option-tag)                 [RFC 3261 20.32]
    An empty tag is kept.      "Require: 100rel, timer" -> two values, written as two lines */
class KX_SIP_API KxSipRequireHeader final : public KxSipTokenHeader<KxSipRequireHeader> {
public:
    explicit KxSipRequireHeader(const char* optionTag) : KxSipTokenHeader(optionTag) {}
    explicit KxSipRequireHeader(KxSipText optionTag) : KxSipTokenHeader(optionTag) {}

    const KxString& getOptionTag() const { return m_value; }
    void setOptionTag(KxSipText optionTag) { setTokenText(optionTag); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRequireHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRequire;
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = nullptr;

private:
    friend class KxSipHeaderOf<KxSipRequireHeader>;

    KxSipRequireHeader() = default;
};
