#pragma once

#include "sipobject/KxSipParseErrorEmptyHeader.h"

/** For a Supported header without an option tag. Applications that refuse such a header may throw it; the library
    accepts the header and never throws this. */
class KX_SIP_API KxSipParseErrorEmptySupported
    : public KxExceptionOf<KxSipParseErrorEmptySupported, KxSipParseErrorEmptyHeader> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseErrorEmptySupported() override;
};
