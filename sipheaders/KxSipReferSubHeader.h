#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** Refer-Sub: whether a REFER makes a subscription, so that its progress is notified. Absent, it does.
    Refer-Sub = "Refer-Sub" HCOLON refer-sub-value *(SEMI exten)              [RFC 4488 4]
    refer-sub-value = "true" / "false"
    Any token is accepted.      "Refer-Sub: FALSE ;x" -> the same */
class KX_HEADERS_API KxSipReferSubHeader final : public KxSipFieldHeader<KxSipReferSubHeader> {
public:
    /** Takes a bool only: texts convert to it, and "false" would be true. */
    template <std::same_as<bool> Bool>
    explicit KxSipReferSubHeader(Bool isWanted) : KxSipFieldHeader(sText(isWanted)) {}

    /** "true", "false" or another, in any letter case. */
    const KxString& getValue() const { return m_value; }
    [[nodiscard]] bool isTrue() const { return m_value.equalsNoCase("true"); }
    [[nodiscard]] bool isFalse() const { return m_value.equalsNoCase("false"); }
    template <std::same_as<bool> Bool>
    void setValue(Bool isWanted) {
        m_value = KxString(sText(isWanted));
    }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipReferSubHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Refer-Sub header";

private:
    friend class KxSipHeaderOf<KxSipReferSubHeader>;

    KxSipReferSubHeader() = default;
    static const char* sText(bool isWanted) { return isWanted ? "true" : "false"; }
};
