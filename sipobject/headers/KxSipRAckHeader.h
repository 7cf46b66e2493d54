#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"

#include <cstdint>

/** RAck: identifies the reliable provisional response that a PRACK acknowledges.
    RAck = "RAck" HCOLON response-num LWS CSeq-num LWS Method                 [RFC 3262 7.2]
    A missing method throws "Invalid RAck header".      "RAck: 776 1 INVITE" -> the same */
class KX_SIP_API KxSipRAckHeader final : public KxSipHeaderOf<KxSipRAckHeader> {
public:
    KxSipRAckHeader(std::uint32_t responseNumber, std::uint32_t seqNumber, const KxString& method)
        : m_responseNumber(responseNumber), m_seqNumber(seqNumber), m_method(method) {}
    KxSipRAckHeader(std::uint32_t responseNumber, std::uint32_t seqNumber, KxSipStdText method)
        : KxSipRAckHeader(responseNumber, seqNumber, method.needed("method")) {}

    /** The RSeq number of the response. */
    std::uint32_t getResponseNumber() const { return m_responseNumber; }
    void setResponseNumber(std::uint32_t number) { m_responseNumber = number; }
    /** The CSeq number of the response. */
    std::uint32_t getSeqNumber() const { return m_seqNumber; }
    void setSeqNumber(std::uint32_t number) { m_seqNumber = number; }
    const KxString& getMethod() const { return m_method; }
    /** Throws KxSipParseError if the text is empty or contains CR, LF or NUL. */
    void setMethod(KxSipText method) { m_method = method.needed("method"); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRAckHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kRAck;

private:
    friend class KxSipHeaderOf<KxSipRAckHeader>;

    KxSipRAckHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    std::uint32_t m_responseNumber = 0;
    std::uint32_t m_seqNumber = 0;
    KxString m_method;
};
