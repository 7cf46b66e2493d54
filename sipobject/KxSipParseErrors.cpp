#include "sipobject/KxSipParseErrorEmptySupported.h"
#include "sipobject/KxSipParseKeepAliveException.h"

// Defined here, once, so that every library agrees on the classes that are thrown.
KxSipParseError::~KxSipParseError() = default;
KxSipParseErrorEmptyHeader::~KxSipParseErrorEmptyHeader() = default;
KxSipParseErrorEmptySupported::~KxSipParseErrorEmptySupported() = default;
KxSipParseKeepAliveException::~KxSipParseKeepAliveException() = default;
