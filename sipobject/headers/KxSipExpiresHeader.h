#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxDate.h"

#include <concepts>
#include <cstdint>

/** Expires: when a registration, subscription or offer ends, as a number of seconds or as a date.
    Expires = "Expires" HCOLON delta-seconds                                  [RFC 3261 20.19]
    A date is accepted too, as in RFC 2543 6.20, but not in the RFC grammar. Throws "Invalid Expires header" for an
    empty value, and "un-expecting end of file when parsing KxSipExpiresHeader" if the value starts with a digit and has
    no blank or line end within 64 characters.
    "Expires: 3600  " -> "Expires: 3600"; "Expires: Thu, 01 Dec 1994 16:00:00 GMT" -> the same */
class KX_SIP_API KxSipExpiresHeader final : public KxSipHeaderOf<KxSipExpiresHeader> {
public:
    explicit KxSipExpiresHeader(std::uint32_t deltaSeconds) : m_deltaSeconds(deltaSeconds) {}
    /** The same for other integer types, so that a literal 0 is a number and not a null text. */
    template <std::integral Number>
    explicit KxSipExpiresHeader(Number deltaSeconds) : KxSipExpiresHeader(static_cast<std::uint32_t>(deltaSeconds)) {}
    /** Sets a date; null reads as empty. */
    explicit KxSipExpiresHeader(const char* date) { readDate(date == nullptr ? "" : date); }
    explicit KxSipExpiresHeader(KxSipText date) { readDate(date.needed("date").view()); }

    /** Whether the value is a date. */
    bool isSipDate() const { return m_isDate; }
    const KxDate& getDate() const { return m_date; }
    /** Makes the value a date, which the RFC grammar does not read. */
    void setDate(const KxDate& date) {
        m_date = date;
        m_isDate = true;
        m_deltaSeconds = 0;
    }
    /** 0 when the value is a date. */
    std::uint32_t getDeltaSeconds() const { return m_deltaSeconds; }
    /** Makes the value a number of seconds. */
    void setDeltaSeconds(std::uint32_t seconds) {
        m_date = KxDate();
        m_isDate = false;
        m_deltaSeconds = seconds;
    }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipExpiresHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kExpires;

private:
    friend class KxSipHeaderOf<KxSipExpiresHeader>;

    KxSipExpiresHeader() = default;
    void readDate(std::string_view text);
    KxSipFault parseSeconds(KxSipLine& line, bool& taken);
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    bool m_isDate = false;
    KxDate m_date;
    std::uint32_t m_deltaSeconds = 0;
};
