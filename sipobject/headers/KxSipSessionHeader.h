#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** Session: the purpose of the session description in a provisional response ("Media", "QoS", "Security"). From the
    drafts that preceded RFC 3262.
    Session = "Session" HCOLON session-type *( SEMI generic-param )
    The type may have the form of a media type: it ends only at a blank, comma or ";". An empty one throws "Invalid
    Session header".      "Session: Media ;x=1" -> "Session: Media;x=1" */
class KX_SIP_API KxSipSessionHeader final
    : public KxSipTokenHeader<KxSipSessionHeader, KxSipParameterHeader<KxSipSessionHeader>> {
public:
    explicit KxSipSessionHeader(const char* type) : KxSipTokenHeader(type) {}
    explicit KxSipSessionHeader(KxSipText type) : KxSipTokenHeader(type) {}

    const KxString& getType() const { return m_value; }
    void setType(KxSipText type) { setTokenText(type); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSessionHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kSession;
    static constexpr KxCharSet kTokenEnd{", \t\r\n;"};
    static constexpr const char* kEmptyError = "Invalid Session header";

private:
    friend class KxSipHeaderOf<KxSipSessionHeader>;

    KxSipSessionHeader() = default;
};
