#include "sipobject/headers/KxSipResponseKeyHeader.h"

#include "util/KxOutputStream.h"

constinit const KxConstString KxSipResponseKeyHeader::sToken{"Response-Key"};

static const KxSipResponseKeyHeader::Registration s_registration;

KxSipFault KxSipResponseKeyHeader::parseValue(KxSipLine& line) {
    m_scheme = KxString(line.token(sDelimeters));
    if (m_scheme.empty()) {
        return KxSipFault("Invalid Response-Key header");
    }
    for (m_parameters.write().parse(line); line.peek() == ','; m_parameters.write().parse(line)) {
        line.read();
    }
    return {};
}

void KxSipResponseKeyHeader::serializeValue(KxOutputStream& out) const {
    out << m_scheme;
    char separator = ' ';
    for (const KxParameters::Pair& pair : m_parameters) {
        out << separator << pair.name;
        if (!pair.value.empty()) {
            out << '=' << pair.value;
        }
        separator = ',';
    }
}
