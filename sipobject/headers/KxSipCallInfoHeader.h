#pragma once

#include "sipobject/headers/KxSipURIHeader.h"

/** Call-Info: more about the caller or callee, for example an icon or a web page.
    Call-Info = "Call-Info" HCOLON info *(COMMA info)                         [RFC 3261 20.9]
    info = LAQUOT absoluteURI RAQUOT *( SEMI info-param)
    The classic grammar does not know the name, so that a received line becomes a KxSipUnknownHeader.
    KxSipCallInfoHeader("<http://h/a.png>;purpose=icon") -> "Call-Info: <http://h/a.png>;purpose=icon" */
class KX_SIP_API KxSipCallInfoHeader final : public KxSipURIHeader<KxSipCallInfoHeader> {
public:
    /** Holds a copy; nil stays nil. */
    explicit KxSipCallInfoHeader(const KxHandle<KxURI>& uri) : KxSipURIHeader(uri) {}
    /** Reads the value, brackets included. Throws KxSipParseError ("Invalid Call-Info header" without brackets) and
        what the URI's class throws. */
    explicit KxSipCallInfoHeader(const char* text) { parseText(text); }
    explicit KxSipCallInfoHeader(KxSipText text) { parseText(text.checked()); }

    /** "icon", "info", "card" or another; nil when absent. */
    KxString getPurpose() const { return getParameter("purpose"); }
    void setPurpose(const KxString& purpose) { setParameter("purpose", purpose); }
    void setPurpose(KxSipStdText purpose) { setPurpose(purpose.line()); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipCallInfoHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kCallInfo;
    static constexpr const char* kInvalid = "Invalid Call-Info header";

    static constexpr bool kIsRFCOnly = true;

private:
    friend class KxSipHeaderOf<KxSipCallInfoHeader>;
    friend class KxSipTextKeepingHeader<KxSipCallInfoHeader>;

    KxSipCallInfoHeader() = default;
};
