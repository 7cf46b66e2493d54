#include "sipobject/headers/KxSipReferToHeader.h"

constinit const KxConstString KxSipReferToHeader::sToken{"Refer-To"};
constinit const KxConstString KxSipReferToHeader::sRFCCompactToken{"r"};

static const KxSipReferToHeader::Registration s_registration;

KxSipReferToHeader::KxSipReferToHeader(const KxHandle<KxURI>& uri)
    : KxSipParameterAddressHeader(KxMake<KxSipNameAddress>(KxString(""), uri), {}) {}

KxSipFault KxSipReferToHeader::parseValue(KxSipLine& line) {
    return KxSipGrammar::sKeepsWholeAddresses() ? Base::parseStrictly(line)
                                                : KxSipNameAddress::sConstructFrom(line, m_nameAddress);
}

void KxSipReferToHeader::serializeValue(KxOutputStream& out) const {
    if (KxSipGrammar::sKeepsWholeAddresses() || !m_parameters.empty()) {
        Base::serializeValue(out);
    } else {
        out << getURI();
    }
}
