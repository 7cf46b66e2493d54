#include "sipheaders/KxSipPrivacyHeader.h"

#include "sipheaders/KxSipParameterValue.h"

#include <algorithm>

constinit const KxConstString KxSipPrivacyHeader::sToken{"Privacy"};

const HeaderID KxSipPrivacyHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);

bool KxSipPrivacyHeader::has(std::string_view value) const {
    return std::any_of(m_values.begin(), m_values.end(), [&](const KxString& it) { return it.equalsNoCase(value); });
}

void KxSipPrivacyHeader::add(KxSipText value) {
    if (!KxSipParameterValue::sIsToken(value.view())) {
        KxSipFault("Invalid Privacy header").raise();
    }
    if (!has(value.view())) {
        m_values.push_back(value.line());
    }
}

bool KxSipPrivacyHeader::remove(std::string_view value) {
    const auto isMeant = [&](const KxString& it) { return it.equalsNoCase(value); };
    return !std::all_of(m_values.begin(), m_values.end(), isMeant) && std::erase_if(m_values, isMeant) != 0;
}

KxSipFault KxSipPrivacyHeader::parseValue(KxSipLine& line) {
    std::vector<KxString> values;
    int end = ';';
    while (end == ';' || end == ',') {
        const std::string_view value = KxAscii::trim(line.until<';', ',', '\r', '\n'>());
        if (!KxSipParameterValue::sIsToken(value)) {
            return KxSipFault("Invalid Privacy header");
        }
        values.emplace_back(value);
        end = line.peek();
        line.consume(end == ';' || end == ',' ? 1 : 0);
    }
    m_values = std::move(values);
    return {};
}

void KxSipPrivacyHeader::serializeValue(KxOutputStream& out) const {
    for (const KxString& value : m_values) {
        out.writeAll(std::string_view(&value == &m_values.front() ? "" : ";"), value);
    }
}
