#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"
#include "sipobject/headers/KxSipParameterHeader.h"

/** Min-SE: the shortest session interval, in seconds, that all parties on the path accept.
    Min-SE = "Min-SE" HCOLON delta-seconds *(SEMI generic-param)              [RFC 4028 5]
    A value that does not begin with a digit throws "Invalid Minimum SE header".
    "Min-SE: 90 ;x" -> "Min-SE: 90;x" */
class KX_SIP_API KxSipMinSEHeader final
    : public KxSipNumberHeader<KxSipMinSEHeader, KxSipParameterHeader<KxSipMinSEHeader>> {
public:
    explicit KxSipMinSEHeader(std::uint32_t seconds) : KxSipNumberHeader(seconds) {}

    std::uint32_t getDeltaSeconds() const { return m_number; }
    void setDeltaSeconds(std::uint32_t seconds) { m_number = seconds; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipMinSEHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kMinSE;
    static constexpr const char* kNoDigitError = "Invalid Minimum SE header";

private:
    friend class KxSipHeaderOf<KxSipMinSEHeader>;

    KxSipMinSEHeader() = default;
};
