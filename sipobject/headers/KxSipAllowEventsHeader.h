#pragma once

#include "sipobject/headers/KxSipTokenHeader.h"

/** Allow-Events: an event package that the sender supports. One object per package.
    Allow-Events = ( "Allow-Events" / "u" ) HCOLON event-type *(COMMA event-type)   [RFC 6665 8.4]
    Only the RFC grammar knows the compact name. An empty package is refused.
    "Allow-Events: presence, dialog" -> two values, written as two lines */
class KX_SIP_API KxSipAllowEventsHeader final : public KxSipTokenHeader<KxSipAllowEventsHeader> {
public:
    explicit KxSipAllowEventsHeader(const char* event) : KxSipTokenHeader(event) {}
    explicit KxSipAllowEventsHeader(KxSipText event) : KxSipTokenHeader(event) {}

    const KxString& getEvent() const { return m_value; }
    void setEvent(KxSipText event) { setTokenText(event); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipAllowEventsHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kAllowEvents;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Empty event-type in Allow-Events header";

private:
    friend class KxSipHeaderOf<KxSipAllowEventsHeader>;

    KxSipAllowEventsHeader() = default;
};
