#include "sipobject/KxSipParseErrorEmptyHeader.h"

// Not inline, so that all libraries use the same type information for the thrown class.
KxSipParseErrorEmptyHeader::~KxSipParseErrorEmptyHeader() = default;
