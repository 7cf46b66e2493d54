#pragma once

#include "sipobject/SipApi.h"
#include "util/KxException.h"

/** Thrown if the input is a keep-alive, not a message. It is not a KxSipParseError, so that a transport can distinguish
    keep-alives from invalid messages. */
class KX_SIP_API KxSipParseKeepAliveException : public KxExceptionOf<KxSipParseKeepAliveException, KxException> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseKeepAliveException() override;
};
