#pragma once

#include "sipobject/KxSipParseError.h"

/** A header line with nothing behind its colon. */
class KX_SIP_API KxSipParseErrorEmptyHeader : public KxExceptionOf<KxSipParseErrorEmptyHeader, KxSipParseError> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseErrorEmptyHeader() override;
};
