#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"

/** Content-Length: the size of the body in bytes.
    Content-Length = ( "Content-Length" / "l" ) HCOLON 1*DIGIT                [RFC 3261 20.14]
    A value that is not a number reads as 0.      "l: 42" -> "l: 42" */
class KX_SIP_API KxSipContentLengthHeader final : public KxSipNumberHeader<KxSipContentLengthHeader> {
public:
    explicit KxSipContentLengthHeader(std::uint32_t length) : KxSipNumberHeader(length) {}

    std::uint32_t getContentLength() const { return m_number; }
    void setContentLength(std::uint32_t length) { m_number = length; }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr std::uint32_t kMost = 4294967294U;
    static constexpr const char* kRangeError = "Invalid Content-Length header";
    static constexpr char kClassName[] = "KxSipContentLengthHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kContentLength;

private:
    friend class KxSipHeaderOf<KxSipContentLengthHeader>;

    KxSipContentLengthHeader() = default;
};
