#pragma once

#include "sipobject/headers/KxSipTextHeader.h"

/** Organization: the name of the organization that the sender belongs to.
    Organization = "Organization" HCOLON [TEXT-UTF8-TRIM]                     [RFC 3261 20.25]
    An empty text is refused, as for any header.      "Organization: Smith, Jones & Co" -> the same */
class KX_SIP_API KxSipOrganizationHeader final : public KxSipTextHeader<KxSipOrganizationHeader> {
public:
    explicit KxSipOrganizationHeader(const KxString& organization) : KxSipTextHeader(organization) {}
    explicit KxSipOrganizationHeader(KxSipStdText organization) : KxSipTextHeader(organization.line()) {}

    const KxString& getOrganization() const { return m_text; }
    void setOrganization(KxSipText organization) { m_text = organization.line(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipOrganizationHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kOrganization;

private:
    friend class KxSipHeaderOf<KxSipOrganizationHeader>;

    KxSipOrganizationHeader() = default;
};
