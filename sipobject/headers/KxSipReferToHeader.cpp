#include "sipobject/headers/KxSipReferToHeader.h"

#include "util/KxOutputStream.h"

constinit const KxConstString KxSipReferToHeader::sToken{"Refer-To"};
constinit const KxConstString KxSipReferToHeader::sRFCCompactToken{"r"};

static const KxSipReferToHeader::Registration s_registration;

KxSipReferToHeader::KxSipReferToHeader(const KxHandle<KxURI>& uri) : m_URI(uri.isNil() ? nullptr : uri->clone()) {}

KxSipReferToHeader::KxSipReferToHeader(const KxSipReferToHeader& other)
    : KxSipHeaderOf(other), m_URI(other.m_URI.isNil() ? nullptr : other.m_URI->clone()) {}

KxHandle<KxSipURL> KxSipReferToHeader::getURL() const {
    const bool isURL = !m_URI.isNil() && m_URI->isSipURL();
    return KxHandle<KxSipURL>(isURL ? static_cast<KxSipURL*>(m_URI.get()) : nullptr);
}

KxSipFault KxSipReferToHeader::parseValue(KxSipLine& line) {
    KxHandle<KxSipNameAddress> address;
    if (const KxSipFault fault = KxSipNameAddress::sConstructFrom(line, address)) {
        return fault;
    }
    m_URI = address->getURI();
    if (m_URI.isNil()) {
        return KxSipFault("Invalid URI in Refer-To header");
    }
    return {};
}

void KxSipReferToHeader::serializeValue(KxOutputStream& out) const {
    out << m_URI;
}
