#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** Subscription-State: the state of the subscription to which a NOTIFY belongs.
    Subscription-State = "Subscription-State" HCOLON substate-value *(SEMI subexp-params)   [RFC 6665 8.2.3, 8.4]
    substate-value = "active" / "pending" / "terminated" / extension-substate
    subexp-params = "reason" EQUAL event-reason-value / "expires" EQUAL delta-seconds /
                    "retry-after" EQUAL delta-seconds / generic-param
    "Subscription-State: terminated;reason=probation;retry-after=60" -> the same */
class KX_HEADERS_API KxSipSubscriptionStateHeader final : public KxSipFieldHeader<KxSipSubscriptionStateHeader> {
public:
    /** Throws KxSipParseError if the state is no token. */
    explicit KxSipSubscriptionStateHeader(KxSipText state) : KxSipFieldHeader(state) {}

    /** "active", "pending", "terminated" or another, in any letter case. */
    const KxString& getState() const { return m_value; }
    void setState(KxSipText state) { setTokenText(state); }
    [[nodiscard]] bool isActive() const { return m_value.equalsNoCase("active"); }
    [[nodiscard]] bool isPending() const { return m_value.equalsNoCase("pending"); }
    [[nodiscard]] bool isTerminated() const { return m_value.equalsNoCase("terminated"); }
    /** Why the subscription ended, such as "timeout" or "noresource"; nil when absent. [RFC 6665 4.1.3] */
    KxString getReason() const { return KxSipParameterValue::sText(getParameter("reason")); }
    void setReason(KxSipText reason) { setParameter("reason", KxSipParameterValue::sTokenOrQuoted(reason)); }
    [[nodiscard]] bool isReason(std::string_view reason) const { return getReason().equalsNoCase(reason); }
    /** In seconds: how long the subscription lasts; none if it is absent or no number. */
    std::optional<std::uint32_t> getExpires() const { return KxSipParameterValue::sNumber(getParameter("expires")); }
    void setExpires(std::uint32_t seconds) { setParameter("expires", KxSipParameterValue::sOfNumber(seconds)); }
    /** In seconds: when to subscribe again after the end; none if it is absent or no number. */
    std::optional<std::uint32_t> getRetryAfter() const {
        return KxSipParameterValue::sNumber(getParameter("retry-after"));
    }
    void setRetryAfter(std::uint32_t seconds) { setParameter("retry-after", KxSipParameterValue::sOfNumber(seconds)); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSubscriptionStateHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Subscription-State header";

private:
    friend class KxSipHeaderOf<KxSipSubscriptionStateHeader>;

    KxSipSubscriptionStateHeader() = default;
};
