#pragma once

#include "sipobject/SipApi.h"
#include "util/KxException.h"

/** Thrown for SIP text that can't be read or a message that can't be built. The error text gives the reason. */
class KX_SIP_API KxSipParseError : public KxExceptionOf<KxSipParseError, KxException> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseError() override;
};
