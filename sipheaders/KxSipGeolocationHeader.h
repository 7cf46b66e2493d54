#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"

/** Geolocation: where the location of the sender's target is to be found. One object per location.
    Geolocation = "Geolocation" HCOLON locationValue *(COMMA locationValue)   [RFC 6442 4.1]
    locationValue = LAQUOT locationURI RAQUOT *(SEMI geoloc-param)
    The URI is of any scheme. A display name before it and a URI without brackets are read, too.
    "Geolocation: <cid:loc@h>, <https://l.example/a,b>;x" -> two values */
class KX_HEADERS_API KxSipGeolocationHeader final : public KxSipAddressFieldHeader<KxSipGeolocationHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;
    /** Holds a copy; nil stays nil. */
    explicit KxSipGeolocationHeader(const KxHandle<KxURI>& uri)
        : KxSipAddressFieldHeader(KxMake<KxSipNameAddress>(KxString(""), uri)) {}

    /** The URI itself, shared; nil if the constructor was given nil. */
    const KxHandle<KxURI>& getURI() const { return m_nameAddress->getURI(); }
    /** Whether the location is in the body of the message: the scheme is "cid". [RFC 6442 4.1, RFC 2392] */
    [[nodiscard]] bool isByValue() const { return !getURI().isNil() && getURI()->getScheme().equalsNoCase("cid"); }
    /** The Content-ID of the part of the body that has the location, with escapes; nil if the location is not there. */
    KxString getContentID() const { return isByValue() ? getURI()->getSchemeData() : KxString(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipGeolocationHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipGeolocationHeader>;

    KxSipGeolocationHeader() = default;
};
