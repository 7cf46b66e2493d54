#include "sipobject/KxSipParseErrorEmptySupported.h"

// Not inline, so that all libraries use the same type information for the thrown class.
KxSipParseErrorEmptySupported::~KxSipParseErrorEmptySupported() = default;
