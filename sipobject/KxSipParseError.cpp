#include "sipobject/KxSipParseError.h"

// Not inline, so that all libraries use the same type information for the thrown class.
KxSipParseError::~KxSipParseError() = default;
