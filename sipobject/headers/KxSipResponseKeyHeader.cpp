#include "sipobject/headers/KxSipResponseKeyHeader.h"

#include "util/KxOutputStream.h"

namespace {

constexpr const char* kInvalid = "Invalid Response-Key header";

} // namespace

constinit const KxConstString KxSipResponseKeyHeader::sToken{"Response-Key"};

static const KxSipResponseKeyHeader::Registration s_registration;

KxSipFault KxSipResponseKeyHeader::parseValue(KxSipLine& line) {
    m_scheme = KxString(line.token(sDelimeters));
    if (m_scheme.empty()) {
        return KxSipFault(kInvalid);
    }
    if (KxSipGrammar::sReadsParametersStrictly()) {
        return parseStrictly(line);
    }
    for (m_parameters.write().parse(line); line.peek() == ','; m_parameters.write().parse(line)) {
        line.read();
    }
    return {};
}

/** A quote that is not closed would hide the commas that are written after it. */
KxSipFault KxSipResponseKeyHeader::parseStrictly(KxSipLine& line) {
    line.skipSpace();
    for (bool isMore = line.peek() >= 0; isMore; isMore = line.skipComma()) {
        if (!m_parameters.write().parseExactly(line)) {
            return KxSipFault(kInvalid);
        }
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
