#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"

/** Min-Expires: the shortest expiry, in seconds, that a server accepts.
    Min-Expires = "Min-Expires" HCOLON delta-seconds                          [RFC 3261 20.23]
    A value that does not begin with a digit throws "Invalid Minimum SE header", the same text as for Min-SE.
    "Min-Expires: 60" -> the same */
class KX_SIP_API KxSipMinExpiresHeader final : public KxSipNumberHeader<KxSipMinExpiresHeader> {
public:
    explicit KxSipMinExpiresHeader(std::uint32_t seconds) : KxSipNumberHeader(seconds) {}
    KxSipMinExpiresHeader() = default;

    std::uint32_t getDeltaSeconds() const { return m_number; }
    void setDeltaSeconds(std::uint32_t seconds) { m_number = seconds; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipMinExpiresHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kMinExpires;
    static constexpr const char* kNoDigitError = "Invalid Minimum SE header";
};
