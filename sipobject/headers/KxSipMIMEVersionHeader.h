#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"

#include <cstdint>

/** MIME-Version: the version of MIME that the body follows.
    MIME-Version = "MIME-Version" HCOLON 1*DIGIT "." 1*DIGIT                  [RFC 3261 20.24]
    Anything else throws "Invalid MIME-Version header"; text after the version, such as a comment (RFC 2045), is
    skipped.      "MIME-Version: 1.0 (x)" -> "MIME-Version: 1.0" */
class KX_SIP_API KxSipMIMEVersionHeader final : public KxSipHeaderOf<KxSipMIMEVersionHeader> {
public:
    KxSipMIMEVersionHeader(std::uint32_t high, std::uint32_t low) : m_high(high), m_low(low) {}

    /** The number before the point. */
    std::uint32_t getVersionHigh() const { return m_high; }
    /** The number after the point. */
    std::uint32_t getVersionLow() const { return m_low; }
    void setVersion(std::uint32_t high, std::uint32_t low) {
        m_high = high;
        m_low = low;
    }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipMIMEVersionHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kMIMEVersion;

private:
    friend class KxSipHeaderOf<KxSipMIMEVersionHeader>;

    KxSipMIMEVersionHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    std::uint32_t m_high = 1;
    std::uint32_t m_low = 0;
};
