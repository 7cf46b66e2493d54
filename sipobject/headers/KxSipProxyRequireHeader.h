#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Proxy-Require: an option tag that proxies must support. One object per tag; a comma-separated line becomes a chain.
    Proxy-Require = "Proxy-Require" HCOLON option-tag *(COMMA option-tag)     [RFC 3261 20.29]
    An empty tag is kept.      "Proxy-Require: a;b" -> "Proxy-Require: a;b" */
class KX_SIP_API KxSipProxyRequireHeader final : public KxSipTokenHeader<KxSipProxyRequireHeader> {
public:
    explicit KxSipProxyRequireHeader(const char* optionTag) : KxSipTokenHeader(optionTag) {}
    explicit KxSipProxyRequireHeader(KxSipText optionTag) : KxSipTokenHeader(optionTag) {}

    const KxString& getOptionTag() const { return m_value; }
    void setOptionTag(KxSipText optionTag) { setTokenText(optionTag); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipProxyRequireHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kProxyRequire;
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = nullptr;

private:
    friend class KxSipHeaderOf<KxSipProxyRequireHeader>;

    KxSipProxyRequireHeader() = default;
};
