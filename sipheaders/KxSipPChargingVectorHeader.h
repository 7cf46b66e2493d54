#pragma once

#include "sipheaders/KxSipTextParameterHeader.h"

/** P-Charging-Vector: identifies a call, and the networks it passes, for charging.
    P-Charging-Vector = "P-Charging-Vector" HCOLON icid-value *(SEMI charge-params)    [RFC 7315 5.6]
    icid-value = "icid-value" EQUAL gen-value
    charge-params = "icid-generated-at" EQUAL host / ( "orig-ioi" / "term-ioi" ) EQUAL gen-value /
                    "transit-ioi" EQUAL DQUOTE transit-ioi-param *(COMMA transit-ioi-param) DQUOTE / generic-param
    icid-value may be at any place.      "P-Charging-Vector: icid-value="1,2" ;orig-ioi=home1.net" -> the same */
class KX_HEADERS_API KxSipPChargingVectorHeader final : public KxSipTextParameterHeader<KxSipPChargingVectorHeader> {
public:
    explicit KxSipPChargingVectorHeader(KxSipText icid) { setICIDValue(icid); }

    /** The IMS charging identifier, the same in all networks of a call. This text and the others are without quotes and
        escapes, and nil when absent. */
    KxString getICIDValue() const { return text("icid-value"); }
    /** Throws KxSipParseError if the text contains CR, LF or NUL, or is empty. */
    void setICIDValue(KxSipText icid) { setText("icid-value", icid); }
    /** The host that has made the identifier. */
    KxString getICIDGeneratedAt() const { return text("icid-generated-at"); }
    /** As setICIDValue. An IPv6 address needs its brackets. */
    void setICIDGeneratedAt(KxSipText host);
    /** The network operator ("inter operator identifier") of the caller. */
    KxString getOrigIOI() const { return text("orig-ioi"); }
    void setOrigIOI(KxSipText operatorName) { setText("orig-ioi", operatorName); }
    /** The network operator of the callee. */
    KxString getTermIOI() const { return text("term-ioi"); }
    void setTermIOI(KxSipText operatorName) { setText("term-ioi", operatorName); }
    /** The operators in between, with commas between them: names with an index, or "void". */
    KxString getTransitIOI() const { return text("transit-ioi"); }
    void setTransitIOI(KxSipText list) { setParameter("transit-ioi", KxSipParameterValue::sQuoted(list)); }
    /** The identifier of a call that this one is related to, such as before a handover. */
    KxString getRelatedICID() const { return text("related-icid"); }
    void setRelatedICID(KxSipText icid) { setText("related-icid", icid); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPChargingVectorHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPChargingVectorHeader>;

    KxSipPChargingVectorHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const { out.writeAll(m_parameters.getString()); }
};
