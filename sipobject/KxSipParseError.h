#pragma once

#include "sipobject/SipApi.h"
#include "util/KxException.h"

/** SIP text that can't be read, or a message that can't be built; the text says which. */
class KX_SIP_API KxSipParseError : public KxExceptionOf<KxSipParseError, KxException> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseError() override;
};
