#pragma once

#include "sipheaders/KxSipParameterValue.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/headers/KxSipAddressHeader.h"

/** The headers whose value is a name-address with parameters: ( name-addr / addr-spec ) *( SEMI generic-param ). A class
    takes over the constructors with `using`. */
template <class H>
class KxSipAddressFieldHeader : public KxSipParameterAddressHeader<H, KxSipReceivedHeader<H>> {
    using Base = KxSipParameterAddressHeader<H, KxSipReceivedHeader<H>>;

public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipAddressFieldHeader(const KxHandle<KxSipNameAddress>& address) : Base(address, nullptr) {}
    /** Holds a copy of the URL, without a display name. */
    explicit KxSipAddressFieldHeader(const KxHandle<KxSipURL>& url) : Base(url, nullptr) {}
    /** Reads the value. Throws KxSipParseError and what the URI's class throws. */
    explicit KxSipAddressFieldHeader(KxSipText text) { this->parseText(text.checked()); }

    /** Nil if the URI is no SIP URL; see getNameAddress for others, such as tel. */
    KxHandle<KxSipURL> getURL() const { return this->getSipURL(); }
    /** Holds a copy of another name-address; nil gives an empty one. */
    void setNameAddress(const KxHandle<KxSipNameAddress>& address) {
        this->m_nameAddress = KxHandle<KxSipNameAddress>(address.isNil() ? new KxSipNameAddress : address->clone());
    }
    /** Without quotes and escapes; empty if there is none. */
    KxString getDisplayText() const { return KxSipParameterValue::sText(this->m_nameAddress->getDisplayName()); }

protected:
    KxSipAddressFieldHeader() = default;
    KxSipAddressFieldHeader(const KxSipAddressFieldHeader&) = default;
};
