#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"

/** RSeq: the sequence number of a reliable provisional response in its transaction.
    RSeq = "RSeq" HCOLON response-num                                         [RFC 3262 7.1]
    A value that is not a number reads as 0; in the RFC grammar it is kept as text.      "RSeq: 988" -> the same */
class KX_SIP_API KxSipRSeqHeader final : public KxSipNumberHeader<KxSipRSeqHeader> {
public:
    explicit KxSipRSeqHeader(std::uint32_t number) : KxSipNumberHeader(number) {}
    KxSipRSeqHeader() = default;

    std::uint32_t getResponseNumber() const { return m_number; }
    void setResponseNumber(std::uint32_t number) { m_number = number; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRSeqHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRSeq;
    static constexpr const char* kRangeError = "Invalid RSeq header";
};
