#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxDate.h"

/** Date: when the message was first sent.
    Date = "Date" HCOLON SIP-date                                             [RFC 3261 20.17]
    The whole line is one value. Other date formats are read too (see KxDate) and written in the RFC's format; text that
    is not a date is kept. In the RFC grammar a text that is no SIP-date is not read.
    "Date: Saturday, 13-Nov-10 23:29:00 GMT" -> "Date: Sat, 13 Nov 2010 23:29:00 GMT" */
class KX_SIP_API KxSipDateHeader final : public KxSipHeaderOf<KxSipDateHeader> {
public:
    explicit KxSipDateHeader(const KxDate& date) : m_date(date) {}

    /** Invalid and without a time if the text was not a date. */
    const KxDate& getDate() const { return m_date; }
    void setDate(const KxDate& date) { m_date = date; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipDateHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kDate;

private:
    friend class KxSipHeaderOf<KxSipDateHeader>;

    KxSipDateHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxDate m_date;
};
