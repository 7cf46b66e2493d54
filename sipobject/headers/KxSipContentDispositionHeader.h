#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** Content-Disposition: how the body is to be used.
    Content-Disposition = "Content-Disposition" HCOLON disp-type *( SEMI disp-param )   [RFC 3261 20.11]
    An empty type throws "Invalid Content-Disposition header".
    "Content-Disposition: attachment; filename=\"a,b\";handling=optional" -> the same without the blank */
class KX_SIP_API KxSipContentDispositionHeader final
    : public KxSipTokenHeader<KxSipContentDispositionHeader, KxSipParameterHeader<KxSipContentDispositionHeader>> {
public:
    explicit KxSipContentDispositionHeader(const char* type) : KxSipTokenHeader(type) {}
    explicit KxSipContentDispositionHeader(KxSipText type) : KxSipTokenHeader(type) {}

    /** "session", "render", "icon", "alert" or another. */
    const KxString& getType() const { return m_value; }
    void setType(KxSipText type) { setTokenText(type); }
    /** Whether the type is this one. Letter case is ignored. */
    [[nodiscard]] bool isType(KxSipText type) const { return isTokenText(type); }
    /** "required" or "optional"; nil when absent, which means "required". */
    KxString getHandling() const { return getParameter("handling"); }
    void setHandling(const KxString& handling) { setParameter("handling", handling); }
    void setHandling(KxSipStdText handling) { setHandling(handling.line()); }
    /** Whether a recipient that can't process the body has to refuse the message: always, except for "optional" in any
        letter case. [RFC 3261 20.11] */
    [[nodiscard]] bool isHandlingRequired() const { return !getHandling().equalsNoCase("optional"); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipContentDispositionHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kContentDisposition;
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid Content-Disposition header";

private:
    friend class KxSipHeaderOf<KxSipContentDispositionHeader>;

    KxSipContentDispositionHeader() = default;
};
