#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Allow-Events: one event package an object.
    Allow-Events = ( "Allow-Events" / "u" ) HCOLON event-type *(COMMA event-type)   [RFC 6665 8.4]
    The compact name "u" is not known here; an empty package is refused.
    "Allow-Events: presence, dialog" -> two values, two lines out */
class KX_SIP_API KxSipAllowEventsHeader final : public KxSipTokenHeader<KxSipAllowEventsHeader> {
public:
    explicit KxSipAllowEventsHeader(const char* event) : KxSipTokenHeader(event) {}

    const KxString& getEvent() const { return m_value; }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAllowEventsHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAllowEvents;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Empty event-type in Allow-Events header";

private:
    friend class KxSipHeaderOf<KxSipAllowEventsHeader>;

    KxSipAllowEventsHeader() = default;
};
