#pragma once

#include "sipobject/KxSipParseError.h"

/** Thrown for a header line with nothing after its colon. */
class KX_SIP_API KxSipParseErrorEmptyHeader : public KxExceptionOf<KxSipParseErrorEmptyHeader, KxSipParseError> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseErrorEmptyHeader() override;
};
