#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"

/** Max-Forwards: the number of hops that a request may still make.
    Max-Forwards = "Max-Forwards" HCOLON 1*DIGIT                              [RFC 3261 20.22]
    A value that is not a number reads as 0.      "Max-Forwards: 70" -> the same */
class KX_SIP_API KxSipMaxForwardsHeader final : public KxSipNumberHeader<KxSipMaxForwardsHeader> {
public:
    explicit KxSipMaxForwardsHeader(std::uint32_t hops) : KxSipNumberHeader(hops) {}

    std::uint32_t getMaxForwards() const { return m_number; }
    void setMaxForwards(std::uint32_t hops) { m_number = hops; }

    static const KxConstString sToken;
    static constexpr std::uint32_t kMost = 255;
    static constexpr const char* kRangeError = "Invalid Max-Forwards header";
    static constexpr char kClassName[] = "KxSipMaxForwardsHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kMaxForwards;

    /** The header name, for looking the header up without an object. */
    static const KxString& sGetExpandedToken() { return sToken; }

private:
    friend class KxSipHeaderOf<KxSipMaxForwardsHeader>;

    KxSipMaxForwardsHeader() = default;
};
