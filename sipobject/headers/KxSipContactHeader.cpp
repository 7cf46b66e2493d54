#include "sipobject/headers/KxSipContactHeader.h"

#include "util/KxStreamTokenizer.h"

constinit const KxConstString KxSipContactHeader::sToken{"Contact"};
constinit const KxConstString KxSipContactHeader::sCompactToken{"m"};

static const KxSipContactHeader::Registration s_registration;

KxSipContactHeader::KxSipContactHeader(const KxHandle<KxSipNameAddress>& address)
    : KxSipParameterAddressHeader(address, {}) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipContactHeader ctor");
}

KxSipContactHeader::KxSipContactHeader(const char* text) {
    const Oskan::EntryTraceScope trace(sLogger(), "KxSipContactHeader ctor");
    parseText(text);
}

KxString KxSipContactHeader::getDisplayName() const {
    return m_nameAddress->getDisplayName();
}

KxSipFault KxSipContactHeader::parseValue(KxSipLine& line) {
    m_wildCard = KxStreamTokenizer::sDiscardWhite(line) == '*';
    if (m_wildCard) {
        line.read();
        m_nameAddress = KxMake<KxSipNameAddress>();
        return KxSipGrammar::sReadsParametersStrictly() ? KxSipParameterText::sRead(line, m_parameters) : KxSipFault();
    }
    return Base::parseValue(line);
}

void KxSipContactHeader::serializeValue(KxOutputStream& out) const {
    if (m_wildCard) {
        out.write('*');
        m_parameters.serializeWithSemicolon(out);
    } else {
        Base::serializeValue(out);
    }
    if (!m_comment.empty()) {
        out << " (" << m_comment << ')';
    }
}
