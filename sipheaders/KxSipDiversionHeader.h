#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** Diversion: who diverted the call, and why. One object per diversion, the latest first.
    Diversion = "Diversion" HCOLON 1#( name-addr *(SEMI diversion-params) )   [RFC 5806]
    diversion-params = "reason" / "counter" / "limit" / "privacy" / "screen" / diversion-extension, with EQUAL value
    Extensions are the other parameters: see getParameter.
    "Diversion: <sip:a@h>;reason=user-busy ;counter=2" -> the same */
class KX_HEADERS_API KxSipDiversionHeader final : public KxSipAddressFieldHeader<KxSipDiversionHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;
    /** Holds a copy of the URL. Throws KxSipParseError if the reason has a line end. */
    KxSipDiversionHeader(const KxHandle<KxSipURL>& url, KxSipText reason) : KxSipDiversionHeader(url) {
        setReason(reason);
    }

    /** Such as "user-busy", "no-answer" or "unconditional"; nil when absent. */
    KxString getReason() const { return KxSipParameterValue::sText(getParameter("reason")); }
    void setReason(KxSipText reason) { setParameter("reason", KxSipParameterValue::sTokenOrQuoted(reason)); }
    [[nodiscard]] bool isReason(std::string_view reason) const { return getReason().equalsNoCase(reason); }
    /** How many diversions this value tells of; none if it is absent, which means 1, or no number. */
    std::optional<std::uint32_t> getCounter() const { return KxSipParameterValue::sNumber(getParameter("counter")); }
    void setCounter(std::uint32_t counter) { setParameter("counter", KxSipParameterValue::sOfNumber(counter)); }
    /** How many further diversions are allowed; none if it is absent or no number. */
    std::optional<std::uint32_t> getLimit() const { return KxSipParameterValue::sNumber(getParameter("limit")); }
    void setLimit(std::uint32_t limit) { setParameter("limit", KxSipParameterValue::sOfNumber(limit)); }
    /** "full", "name", "uri", "off" or another; nil when absent. */
    KxString getPrivacy() const { return KxSipParameterValue::sText(getParameter("privacy")); }
    void setPrivacy(KxSipText privacy) { setParameter("privacy", KxSipParameterValue::sTokenOrQuoted(privacy)); }
    /** Whether there is a privacy other than "off", so that name or address must not be shown. */
    [[nodiscard]] bool isPrivate() const { return isParameterPresent("privacy") && !getPrivacy().equalsNoCase("off"); }
    /** "yes" or "no": whether the address is verified or comes from the network; nil when absent. */
    KxString getScreen() const { return KxSipParameterValue::sText(getParameter("screen")); }
    void setScreen(KxSipText screen) { setParameter("screen", KxSipParameterValue::sTokenOrQuoted(screen)); }
    [[nodiscard]] bool isScreened() const { return getScreen().equalsNoCase("yes"); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipDiversionHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipDiversionHeader>;

    KxSipDiversionHeader() = default;
};
