#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Supported: an option tag that the sender supports. One object per tag; a comma-separated line becomes a chain.
    Supported = ( "Supported" / "k" ) HCOLON [option-tag *(COMMA option-tag)]   [RFC 3261 20.37]
    An empty tag is kept; a line of blanks is refused, as for any header.
    "Supported: ,timer" -> an empty value and "timer", written as two lines */
class KX_SIP_API KxSipSupportedHeader final : public KxSipTokenHeader<KxSipSupportedHeader> {
public:
    explicit KxSipSupportedHeader(const char* optionTag) : KxSipTokenHeader(optionTag) {}
    explicit KxSipSupportedHeader(KxSipText optionTag) : KxSipTokenHeader(optionTag) {}

    const KxString& getOptionTag() const { return m_value; }
    void setOptionTag(KxSipText optionTag) { setTokenText(optionTag); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipSupportedHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kSupported;
    static constexpr const KxCharSet& kTokenEnd = kOptionTagEnd;
    static constexpr const char* kEmptyError = nullptr;

private:
    friend class KxSipHeaderOf<KxSipSupportedHeader>;

    KxSipSupportedHeader() = default;
};
