#include "sipobject/headers/KxSipMediaRange.h"

#include "sipobject/headers/KxSipContentTypeHeader.h"

namespace {

bool isQuoted(std::string_view value) {
    return value.size() >= 2 && value.front() == '"' && value.back() == '"';
}

std::string_view withoutQuotes(std::string_view value) {
    return isQuoted(value) ? value.substr(1, value.size() - 2) : value;
}

bool isSameValue(std::string_view a, std::string_view b) {
    return isQuoted(a) && isQuoted(b) ? a == b : KxAscii::equalsNoCase(withoutQuotes(a), withoutQuotes(b));
}

} // namespace

bool KxSipMediaRange::includes(const KxSipContentTypeHeader& contentType) const {
    if (!includesType(contentType.getType(), contentType.getSubType())) {
        return false;
    }
    for (const KxParameters::Pair& parameter : m_parameters) {
        if (parameter.name.equalsNoCase("q")) {
            break;
        }
        const KxString value = contentType.getParameter(parameter.name);
        if (value.isNil() || !isSameValue(parameter.value, value)) {
            return false;
        }
    }
    return true;
}

bool KxSipMediaRange::includes(std::string_view type, std::string_view subType) const {
    const bool hasNoParameters = m_parameters.empty() || m_parameters.begin()->name.equalsNoCase("q");
    return hasNoParameters && includesType(type, subType);
}

bool KxSipMediaRange::includesType(std::string_view type, std::string_view subType) const {
    if (type.empty() || subType.empty()) {
        return false;
    }
    const bool isAny = m_subType == "*" && m_type == "*";
    return isAny ||
           (KxAscii::equalsNoCase(m_type, type) && (m_subType == "*" || KxAscii::equalsNoCase(m_subType, subType)));
}
