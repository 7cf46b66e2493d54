#pragma once

#include "sipobject/KxSipParseErrorEmptyHeader.h"

/** A Supported header without an option tag. For hosts that want to refuse one; the library keeps it and never throws
    this. */
class KX_SIP_API KxSipParseErrorEmptySupported
    : public KxExceptionOf<KxSipParseErrorEmptySupported, KxSipParseErrorEmptyHeader> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseErrorEmptySupported() override;
};
