#include "sipheaders/KxSipPrivacyHeader.h"

#include "sipheaders/KxSipParameterValue.h"

constinit const KxConstString KxSipPrivacyHeader::sToken{"Privacy"};

const HeaderID KxSipPrivacyHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);

std::vector<KxString> KxSipPrivacyHeader::getValues() const {
    std::vector<KxString> values;
    for (const KxParameters::Pair& value : m_values) {
        values.push_back(value.name);
    }
    return values;
}

void KxSipPrivacyHeader::add(KxSipText value) {
    if (!KxSipParameterValue::sIsToken(value.view())) {
        KxSipFault("Invalid Privacy header").raise();
    }
    if (!has(value.view())) {
        m_values.write().setValue(value.view(), KxString(""));
    }
}

bool KxSipPrivacyHeader::remove(std::string_view value) {
    return m_values.size() > 1 && m_values.removeValue(value);
}

KxSipFault KxSipPrivacyHeader::parseValue(KxSipLine& line) {
    KxSharedParameters read;
    KxParameters& values = read.write();
    int end = ';';
    while (end == ';' || end == ',') {
        const std::string_view value = KxAscii::trim(line.until<';', ',', '\r', '\n'>());
        if (!KxSipParameterValue::sIsToken(value)) {
            return KxSipFault("Invalid Privacy header");
        }
        values.setValue(value, KxString(""));
        end = line.peek();
        line.consume(end == ';' || end == ',' ? 1 : 0);
    }
    m_values = read;
    return {};
}

void KxSipPrivacyHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_values.getString());
}
