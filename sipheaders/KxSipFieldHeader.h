#pragma once

#include "sipheaders/KxSipTextParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"

/** The headers whose value is a token with parameters: token *( SEMI generic-param ). A class H defines the error for a
    value that does not begin with a token:

        static constexpr const char* kEmptyError = "..."; */
template <class H>
class KxSipFieldHeader : public KxSipTokenHeader<H, KxSipTextParameterHeader<H>> {
    using Base = KxSipTokenHeader<H, KxSipTextParameterHeader<H>>;

public:
    static constexpr const KxCharSet& kTokenEnd = KxSipHeader::sDelimeters;

protected:
    using Base::Base;
    KxSipFieldHeader() = default;
    KxSipFieldHeader(const KxSipFieldHeader&) = default;
};

/** The headers whose values are tokens. */
template <class H>
class KxSipPlainTokenHeader : public KxSipTokenHeader<H, KxSipReceivedHeader<H>> {
    using Base = KxSipTokenHeader<H, KxSipReceivedHeader<H>>;

public:
    static constexpr const KxCharSet& kTokenEnd = KxSipHeader::sDelimeters;

protected:
    using Base::Base;
    KxSipPlainTokenHeader() = default;
    KxSipPlainTokenHeader(const KxSipPlainTokenHeader&) = default;
};
