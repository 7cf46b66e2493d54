#pragma once

#include "sipobject/headers/KxSipNumberHeader.h"
#include "sipobject/headers/KxSipParameterHeader.h"

/** Session-Expires: the session interval, in seconds, and who refreshes the session.
    Session-Expires = ( "Session-Expires" / "x" ) HCOLON delta-seconds *(SEMI se-params)   [RFC 4028 4]
    A value that does not begin with a digit throws "Invalid Session-Expires header".
    "x: 1800 ;refresher=uac" -> "x: 1800;refresher=uac" */
class KX_SIP_API KxSipSessionExpiresHeader final
    : public KxSipNumberHeader<KxSipSessionExpiresHeader, KxSipParameterHeader<KxSipSessionExpiresHeader>> {
public:
    explicit KxSipSessionExpiresHeader(std::uint32_t seconds) : KxSipNumberHeader(seconds) {}

    std::uint32_t getDeltaSeconds() const { return m_number; }
    void setDeltaSeconds(std::uint32_t seconds) { m_number = seconds; }
    /** sUAC, sUAS or another value, in any letter case; nil when absent. */
    KxString getRefresher() const { return getParameter(sRefresher); }
    void setRefresher(const KxString& refresher) { setParameter(sRefresher, refresher); }
    void setRefresher(KxSipStdText refresher) { setRefresher(refresher.line()); }
    void removeRefresher() { removeParameter(sRefresher); }
    /** Whether the refresher is the UAC, or the UAS. Letter case is ignored. */
    bool isRefresherUAC() const { return getRefresher().equalsNoCase(sUAC); }
    bool isRefresherUAS() const { return getRefresher().equalsNoCase(sUAS); }

    static constexpr const char* sRefresher = "refresher";
    static constexpr const char* sUAC = "uac";
    static constexpr const char* sUAS = "uas";
    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipSessionExpiresHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kSessionExpires;
    static constexpr const char* kNoDigitError = "Invalid Session-Expires header";

private:
    friend class KxSipHeaderOf<KxSipSessionExpiresHeader>;

    KxSipSessionExpiresHeader() = default;
};
