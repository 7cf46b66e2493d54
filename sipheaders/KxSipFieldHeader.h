#pragma once

#include "sipheaders/KxSipTextParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** The headers whose value is a token; Under has what comes after it. A class H defines the error for a value that does
    not begin with a token, and for text that a host gives and that is no token:

        static constexpr const char* kEmptyError = "..."; */
template <class H, class Under = KxSipReceivedHeader<H>>
class KxSipPlainTokenHeader : public KxSipTokenHeader<H, Under> {
    using Base = KxSipTokenHeader<H, Under>;

public:
    static constexpr const KxCharSet& kTokenEnd = KxSipHeader::sDelimeters;

protected:
    KxSipPlainTokenHeader() = default;
    explicit KxSipPlainTokenHeader(KxSipText token) : Base(sChecked(token)) {}
    KxSipPlainTokenHeader(const KxSipPlainTokenHeader&) = default;

    /** Classes make it public under the name of their getter. Throws KxSipParseError for what is no token. */
    void setTokenText(KxSipText token) { Base::setTokenText(sChecked(token)); }

private:
    static const KxSipText& sChecked(const KxSipText& token) {
        if (!KxSipParameterValue::sIsToken(token.view())) {
            KxSipFault(H::kEmptyError).raise();
        }
        return token;
    }
};

/** The headers whose value is a token with parameters: token *( SEMI generic-param ). */
template <class H>
class KxSipFieldHeader : public KxSipPlainTokenHeader<H, KxSipTextParameterHeader<H>> {
protected:
    using KxSipPlainTokenHeader<H, KxSipTextParameterHeader<H>>::KxSipPlainTokenHeader;
    KxSipFieldHeader() = default;
    KxSipFieldHeader(const KxSipFieldHeader&) = default;
};
