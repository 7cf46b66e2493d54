#pragma once

#include "sipobject/SipApi.h"
#include "util/KxException.h"

/** What was read is a keep-alive, not a message. Not a KxSipParseError, so that a transport tells it from garbage. */
class KX_SIP_API KxSipParseKeepAliveException : public KxExceptionOf<KxSipParseKeepAliveException, KxException> {
public:
    using KxExceptionOf::KxExceptionOf;
    ~KxSipParseKeepAliveException() override;
};
