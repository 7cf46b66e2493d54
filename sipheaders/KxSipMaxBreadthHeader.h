#pragma once

#include "sipheaders/HeadersApi.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/headers/KxSipNumberHeader.h"

/** Max-Breadth: the number of branches on which the request may be at the same time.
    Max-Breadth = "Max-Breadth" HCOLON 1*DIGIT                                [RFC 5393 5.8]
    "Max-Breadth: 60" -> the same */
class KX_HEADERS_API KxSipMaxBreadthHeader final
    : public KxSipNumberHeader<KxSipMaxBreadthHeader, KxSipReceivedHeader<KxSipMaxBreadthHeader>> {
public:
    explicit KxSipMaxBreadthHeader(std::uint32_t branches) : KxSipNumberHeader(branches) {}

    std::uint32_t getMaxBreadth() const { return m_number; }
    void setMaxBreadth(std::uint32_t branches) { m_number = branches; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipMaxBreadthHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kNoDigitError = "Invalid Max-Breadth header";

private:
    friend class KxSipHeaderOf<KxSipMaxBreadthHeader>;

    KxSipMaxBreadthHeader() = default;
};
