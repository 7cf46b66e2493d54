#pragma once

#include "sipobject/SipApi.h"
#include "util/KxSharedParameters.h"

#include <string_view>

class KxSipContentTypeHeader;

/** A range of media types, such as that of an Accept header, and what it includes. Letter case is ignored. As subtype
    of the range, "*" means any, and as its type too, if the subtype is "*". The parameters of the range before "q" must
    be those of the media type, which may have others. Their values are compared without letter case and without quotes,
    except that two quoted strings must be the same. [RFC 2616 14.1, RFC 3261 7.3.1]
    "text/ *" includes "TEXT/plain;x=1"; "a/b;x=1;q=0.5" includes "a/b;x=1", but not "a/b" */
class KX_SIP_API KxSipMediaRange {
public:
    /** Refers to the parts, which must live longer. Without a type or a subtype, the range includes nothing. */
    KxSipMediaRange(std::string_view type, std::string_view subType, const KxSharedParameters& parameters)
        : m_type(type), m_subType(subType), m_parameters(parameters) {}

    [[nodiscard]] bool includes(const KxSipContentTypeHeader& contentType) const;
    /** Whether it includes the media type without parameters. */
    [[nodiscard]] bool includes(std::string_view type, std::string_view subType) const;

private:
    bool includesType(std::string_view type, std::string_view subType) const;

    std::string_view m_type;
    std::string_view m_subType;
    const KxSharedParameters& m_parameters;
};
