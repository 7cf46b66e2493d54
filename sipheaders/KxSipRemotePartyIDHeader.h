#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** Remote-Party-ID: who a party of the call is, whether a proxy has verified this, and what is to be hidden. Older than
    P-Asserted-Identity. One object per party.
    Remote-Party-ID = "Remote-Party-ID" HCOLON rpi *(COMMA rpi)               [draft-ietf-sip-privacy-04 6]
    rpi = [display-name] LAQUOT addr-spec RAQUOT *(SEMI rpi-token)
    rpi-token = ( "screen" / "party" / "id-type" / "privacy" ) EQUAL token / generic-param
    A URI may be without brackets. A comma ends the value, also one between two types of privacy.
    "Remote-Party-ID: "Al" <sip:a@h>;party=calling ;screen=yes" -> the same */
class KX_HEADERS_API KxSipRemotePartyIDHeader final : public KxSipAddressFieldHeader<KxSipRemotePartyIDHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;

    /** "calling", "called" or another; nil when absent: the caller in a request, the callee in a response. */
    KxString getParty() const { return text("party"); }
    /** As all setters, throws KxSipParseError if the text is empty or has a line end. */
    void setParty(KxSipText party) { setText("party", party); }
    [[nodiscard]] bool isParty(std::string_view party) const { return getParty().equalsNoCase(party); }
    /** What the URI identifies: "subscriber", "user", "term" or another; nil when absent. */
    KxString getIDType() const { return text("id-type"); }
    void setIDType(KxSipText type) { setText("id-type", type); }
    /** What is to be hidden: "full", "name", "uri" or "off", with "-network" for the network only; nil when absent,
        which means "off". */
    KxString getPrivacy() const { return text("privacy"); }
    void setPrivacy(KxSipText privacy) { setText("privacy", privacy); }
    /** Whether anything is to be hidden. */
    [[nodiscard]] bool isPrivate() const;
    /** Whether a proxy has verified who the party is. */
    [[nodiscard]] bool isScreened() const { return text("screen").equalsNoCase("yes"); }
    void setScreened(bool isScreened) { setParameter("screen", KxString(isScreened ? "yes" : "no")); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipRemotePartyIDHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipRemotePartyIDHeader>;

    KxSipRemotePartyIDHeader() = default;
    KxString text(std::string_view name) const { return KxSipParameterValue::sText(getParameter(name)); }
    void setText(std::string_view name, KxSipText value) {
        setParameter(name, KxSipParameterValue::sTokenOrQuoted(value.needed(name)));
    }
};
