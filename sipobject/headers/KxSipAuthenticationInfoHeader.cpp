#include "sipobject/headers/KxSipAuthenticationInfoHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/auth/KxSipAuthParamWriter.h"
#include "sipobject/auth/KxSipPropertyScanner.h"
#include "sipobject/auth/KxSipPropertyWriter.h"
#include "sipobject/auth/KxSipSchemeLine.h"

constinit const KxConstString KxSipAuthenticationInfoHeader::sToken{"Authentication-Info"};

static const KxSipAuthenticationInfoHeader::Registration s_registration;

KxSipFault KxSipAuthenticationInfoHeader::parseValue(KxSipLine& line) {
    const KxSipSchemeLine value(line);
    KxSipLine properties(value.line());
    const KxSipFault fault =
        KxSipPropertyScanner(m_parameters.write(), KxSipPropertyScanner::kLenient).scan(properties);
    return !fault && KxSipGrammar::sReadsAuthParams() && m_parameters.empty()
               ? KxSipFault("Invalid Authentication-Info header")
               : fault;
}

void KxSipAuthenticationInfoHeader::writeAll(KxOutputStream& out) const {
    KxSipAuthParamWriter writer(out);
    for (const KxParameters::Pair& property : m_parameters) {
        property.name.equalsNoCase("qop") ? writer.bare(property.name, property.value)
                                          : writer.byName(property.name, property.value);
    }
}

void KxSipAuthenticationInfoHeader::serializeValue(KxOutputStream& out) const {
    if (KxSipGrammar::sWritesAuthParams()) {
        return writeAll(out);
    }
    KxSipPropertyWriter writer(out);
    writer.quoted(std::string_view("nextnonce"), getNextnonce());
    if (m_parameters.isPresent("rspauth")) {
        writer.quoted(std::string_view("rspauth"), getRspauth());
    }
    if (m_parameters.isPresent("qop")) {
        writer.bare(std::string_view("qop"), getQop());
        writer.bare(std::string_view("nc"), getNc());
        writer.quoted(std::string_view("cnonce"), getCnonce());
    }
}
