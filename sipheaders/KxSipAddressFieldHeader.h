#pragma once

#include "sipheaders/KxSipParameterValue.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/headers/KxSipAddressHeader.h"

/** The headers whose value is a name-address with parameters: ( name-addr / addr-spec ) *( SEMI generic-param ). A
    class takes over the constructors with `using`. */
template <class H>
class KxSipAddressFieldHeader : public KxSipParameterAddressHeader<H, KxSipReceivedHeader<H>> {
    using Base = KxSipParameterAddressHeader<H, KxSipReceivedHeader<H>>;

public:
    /** Holds a copy; nil gives an empty name-address. */
    explicit KxSipAddressFieldHeader(const KxHandle<KxSipNameAddress>& address) : Base(address, nullptr) {}
    /** Holds a copy of the URL, without a display name. */
    explicit KxSipAddressFieldHeader(const KxHandle<KxSipURL>& url) : Base(url, nullptr) {}
    /** As sRead. */
    explicit KxSipAddressFieldHeader(KxSipText text) : KxSipAddressFieldHeader(*H::sRead(text)) {}

    /** Nil if the URI is no SIP URL; see getNameAddress for others, such as tel. */
    KxHandle<KxSipURL> getURL() const { return this->getSipURL(); }
    /** Without quotes and escapes; empty if there is none. */
    KxString getDisplayText() const { return KxSipParameterValue::sText(this->m_nameAddress->getDisplayName()); }

protected:
    KxSipAddressFieldHeader() = default;
    KxSipAddressFieldHeader(const KxSipAddressFieldHeader&) = default;
};
