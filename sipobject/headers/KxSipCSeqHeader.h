#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"

#include <cstdint>

/** CSeq: the sequence number of a request in its dialog, and its method.
    CSeq = "CSeq" HCOLON 1*DIGIT LWS Method                                   [RFC 3261 20.16]
    Any 32-bit number is accepted; a missing method throws "Invalid CSeq header".
    "CSeq:  4711  INVITE" -> "4711 INVITE" */
class KX_SIP_API KxSipCSeqHeader final : public KxSipHeaderOf<KxSipCSeqHeader> {
public:
    KxSipCSeqHeader(std::uint32_t number, const KxString& method) : m_seqNumber(number), m_method(method) {}
    KxSipCSeqHeader(std::uint32_t number, KxSipStdText method) : KxSipCSeqHeader(number, method.needed("method")) {}

    std::uint32_t getSeqNumber() const { return m_seqNumber; }
    void setSeqNumber(std::uint32_t number) { m_seqNumber = number; }
    const KxString& getMethod() const { return m_method; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipCSeqHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kCSeq;

private:
    friend class KxSipHeaderOf<KxSipCSeqHeader>;
    friend class KxSipResponse;

    KxSipCSeqHeader() = default;
    void setMethod(const KxString& method) { m_method = method; }
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    std::uint32_t m_seqNumber = 0;
    KxString m_method;
};
