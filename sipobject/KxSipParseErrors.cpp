#include "sipobject/KxSipParseErrorEmptySupported.h"
#include "sipobject/KxSipParseKeepAliveException.h"

// Defined in one place, so that all libraries use the same type information for the thrown classes.
KxSipParseError::~KxSipParseError() = default;
KxSipParseErrorEmptyHeader::~KxSipParseErrorEmptyHeader() = default;
KxSipParseErrorEmptySupported::~KxSipParseErrorEmptySupported() = default;
KxSipParseKeepAliveException::~KxSipParseKeepAliveException() = default;
