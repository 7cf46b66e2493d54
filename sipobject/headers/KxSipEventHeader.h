#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** Event: the event package of a subscription, with its templates, and the id that distinguishes subscriptions.
    Event = ( "Event" / "o" ) HCOLON event-type *( SEMI event-param )         [RFC 6665 8.2.1]
    An empty type throws "Invalid Event header". Only the RFC grammar knows the compact name.
    "Event: presence.winfo ;id=93" -> "Event: presence.winfo;id=93" */
class KX_SIP_API KxSipEventHeader final
    : public KxSipTokenHeader<KxSipEventHeader, KxSipParameterHeader<KxSipEventHeader>> {
public:
    explicit KxSipEventHeader(const char* event) : KxSipTokenHeader(event) {}
    explicit KxSipEventHeader(KxSipText event) : KxSipTokenHeader(event) {}

    const KxString& getEvent() const { return m_value; }
    void setEvent(KxSipText event) { setTokenText(event); }
    /** Nil when absent. */
    KxString getId() const { return getParameter("id"); }
    void setId(const KxString& id) { setParameter("id", id); }
    void setId(KxSipStdText id) { setId(id.line()); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipEventHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kEvent;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid Event header";

private:
    friend class KxSipHeaderOf<KxSipEventHeader>;

    KxSipEventHeader() = default;
};
