#pragma once

#include "sipobject/KxSipGrammar.h"
#include "sipobject/address/KxSipNameAddress.h"
#include "sipobject/headers/KxSipParameterHeader.h"
#include "util/KxOutputStream.h"

/** The headers whose value is a name-address. In a header, the ";" after a URL without brackets starts the header's own
    parameters. [RFC 3261 20] This base holds the name-address; the derived classes define the rest of the value. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipAddressHeader : public Base {
public:
    /** The name-address itself, shared; never nil, and empty in a wildcard Contact. */
    const KxHandle<KxSipNameAddress>& getNameAddress() const { return m_nameAddress; }
    /** Holds a copy; nil gives an empty name-address. The parameters of the header stay. */
    void setNameAddress(const KxHandle<KxSipNameAddress>& address) { m_nameAddress = copyOf(address); }

protected:
    KxSipAddressHeader() = default;
    /** Holds a copy; nil gives an empty one. */
    explicit KxSipAddressHeader(const KxHandle<KxSipNameAddress>& address) : m_nameAddress(copyOf(address)) {}
    /** Wraps a copy of the URL, without a display name. */
    explicit KxSipAddressHeader(const KxHandle<KxSipURL>& url)
        : m_nameAddress(new KxSipNameAddress(KxString(""), url)) {}
    KxSipAddressHeader(const KxSipAddressHeader& other)
        : Base(other), m_nameAddress(KxMake<KxSipNameAddress>(*other.m_nameAddress)) {}

    /** The SIP URL of the name-address; nil when there is none. */
    KxHandle<KxSipURL> getSipURL() const { return m_nameAddress->getURL(); }

    /** Reads into the existing name-address, or into a new one if there is none. */
    KxSipFault parseNameAddress(KxSipLine& line) {
        return m_nameAddress.isNil() ? KxSipNameAddress::sConstructFrom(line, m_nameAddress)
                                     : m_nameAddress->parse(line);
    }

    void serializeAddress(KxOutputStream& out) const {
        if (!m_nameAddress.isNil()) {
            m_nameAddress->display(out, false);
        }
    }

    KxHandle<KxSipNameAddress> m_nameAddress;

private:
    friend class KxSipHeaderOf<H>;

    static KxHandle<KxSipNameAddress> copyOf(const KxHandle<KxSipNameAddress>& address) {
        return KxHandle<KxSipNameAddress>(address.isNil() ? new KxSipNameAddress : address->clone());
    }
    void serializeValue(KxOutputStream& out) const { serializeAddress(out); }
};

/** The address headers with header parameters after the name-address: name-addr *(SEMI parameter). A class H with
    further requirements on a value provides checkValidity(), which is called after the value is read in the classic
    grammar. In the RFC grammar, text after a value that is no parameter is refused. */
template <class H, class Under = KxSipHeaderOf<H>>
class KxSipParameterAddressHeader : public KxSipParameterHeader<H, KxSipAddressHeader<H, Under>> {
protected:
    using Base = KxSipParameterHeader<H, KxSipAddressHeader<H, Under>>;

    KxSipParameterAddressHeader() = default;
    /** Holds copies; nil gives empty ones. */
    KxSipParameterAddressHeader(const KxHandle<KxSipNameAddress>& address, const KxHandle<KxParameters>& parameters)
        : Base(address) {
        this->m_parameters = KxSharedParameters(parameters);
    }
    KxSipParameterAddressHeader(const KxHandle<KxSipURL>& url, const KxHandle<KxParameters>& parameters) : Base(url) {
        this->m_parameters = KxSharedParameters(parameters);
    }
    KxSipParameterAddressHeader(const KxSipParameterAddressHeader&) = default;

    [[gnu::always_inline]] KxSipFault parseValue(KxSipLine& line) {
        if (KxSipGrammar::sReadsParametersStrictly()) [[unlikely]] {
            return parseStrictly(line);
        }
        if (const KxSipFault fault = KxSipNameAddress::sConstructFrom(line, this->m_nameAddress)) {
            return fault;
        }
        const int c = line.peek();
        if (c > '\r' && c < 0x80) { // else the end, a line end or a non-text byte
            if (c == ';') {
                line.read();
            }
            if (c != ',') {
                this->m_parameters.write().parse(line);
            }
        }
        if constexpr (requires(H & header) { header.checkValidity(); }) {
            return static_cast<H*>(this)->checkValidity();
        } else {
            return {};
        }
    }
    /** In the RFC grammar. A refused value changes nothing. */
    [[gnu::noinline]] KxSipFault parseStrictly(KxSipLine& line) {
        KxHandle<KxSipNameAddress> address;
        KxSipFault fault = KxSipNameAddress::sConstructFrom(line, address);
        if (!fault) {
            fault = KxSipParameterText::sRead(line, this->m_parameters);
        }
        if (!fault) {
            this->m_nameAddress = std::move(address);
        }
        return fault;
    }
    void serializeValue(KxOutputStream& out) const {
        this->serializeAddress(out);
        this->serializeParameters(out);
    }

private:
    friend class KxSipHeaderOf<H>;
};
