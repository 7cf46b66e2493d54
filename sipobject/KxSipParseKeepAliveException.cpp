#include "sipobject/KxSipParseKeepAliveException.h"

// Not inline, so that all libraries use the same type information for the thrown class.
KxSipParseKeepAliveException::~KxSipParseKeepAliveException() = default;
