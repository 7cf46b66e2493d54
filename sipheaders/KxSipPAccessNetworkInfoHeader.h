#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** P-Access-Network-Info: through which access network, and where, the sender is connected. One object per network.
    P-Access-Network-Info = "P-Access-Network-Info" HCOLON access-net-spec *(COMMA access-net-spec)    [RFC 7315 5.4]
    access-net-spec = ( access-type / access-class ) *(SEMI access-info)
    access-info = "network-provided" / name EQUAL ( token / quoted-string )
    "P-Access-Network-Info: 3GPP-E-UTRAN-FDD; utran-cell-id-3gpp=23415D0FCE11;network-provided" -> the same */
class KX_HEADERS_API KxSipPAccessNetworkInfoHeader final : public KxSipFieldHeader<KxSipPAccessNetworkInfoHeader> {
public:
    /** @param accessType such as "IEEE-802.11". Throws KxSipParseError if it is no token. */
    explicit KxSipPAccessNetworkInfoHeader(KxSipText accessType) : KxSipFieldHeader(accessType) {}

    /** The access type, or the access class, such as "3GPP-GERAN". */
    const KxString& getAccessType() const { return m_value; }
    void setAccessType(KxSipText accessType) { setTokenText(accessType); }
    [[nodiscard]] bool isAccessType(std::string_view accessType) const { return m_value.equalsNoCase(accessType); }
    /** A part of the access information by its name, such as "eth-location" or "local-time-zone", without quotes and
        escapes; nil when absent. */
    KxString getAccessInfo(std::string_view name) const { return text(name); }
    /** This and the setters below throw KxSipParseError if the text is empty or contains CR, LF or NUL. */
    void setAccessInfo(KxSipText name, KxSipText value) { setText(name.checked().view(), value); }
    /** The cell of a UTRAN or E-UTRAN: MCC, MNC, area code and cell identity. Nil when absent. */
    KxString getUTRANCellID() const { return text("utran-cell-id-3gpp"); }
    void setUTRANCellID(KxSipText cell) { setText("utran-cell-id-3gpp", cell); }
    /** The cell of a GERAN: MCC, MNC, LAC and cell identity. Nil when absent. */
    KxString getCGI() const { return text("cgi-3gpp"); }
    void setCGI(KxSipText cell) { setText("cgi-3gpp", cell); }
    KxString getDSLLocation() const { return text("dsl-location"); }
    void setDSLLocation(KxSipText location) { setText("dsl-location", location); }
    /** The MAC address of the WLAN access point. Nil when absent. */
    KxString getWLANNodeID() const { return text("i-wlan-node-id"); }
    void setWLANNodeID(KxSipText node) { setText("i-wlan-node-id", node); }
    /** Whether the network and not the user agent has provided this; "np" in place of the full name is read, too. */
    [[nodiscard]] bool isNetworkProvided() const {
        return isParameterPresent("network-provided") || isParameterPresent("np");
    }
    void setNetworkProvided(bool isProvided);

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPAccessNetworkInfoHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid P-Access-Network-Info header";

private:
    friend class KxSipHeaderOf<KxSipPAccessNetworkInfoHeader>;

    KxSipPAccessNetworkInfoHeader() = default;
};
