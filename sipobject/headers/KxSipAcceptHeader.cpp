#include "sipobject/headers/KxSipAcceptHeader.h"

#include "sipobject/headers/KxSipContentTypeHeader.h"

constinit const KxConstString KxSipAcceptHeader::sToken{"Accept"};

static const KxSipAcceptHeader::Registration s_registration;

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

/** Tells this of the types alone. */
bool KxSipAcceptHeader::includes(std::string_view type, std::string_view subType) const {
    if (type.empty() || subType.empty()) {
        return false;
    }
    const bool isAnySubType = m_subType == "*" && (m_type == "*" || m_type.equalsNoCase(type));
    return isAnySubType || isMediaType(type, subType);
}

bool KxSipAcceptHeader::matches(const KxSipContentTypeHeader& contentType) const {
    if (!includes(contentType.getType(), contentType.getSubType())) {
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

bool KxSipAcceptHeader::matches(KxSipText type, KxSipText subType) const {
    return includes(type.view(), subType.view()) &&
           (m_parameters.empty() || m_parameters.begin()->name.equalsNoCase("q"));
}
