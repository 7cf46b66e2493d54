#include "sipobject/headers/KxSipCallInfoHeader.h"

constinit const KxConstString KxSipCallInfoHeader::sToken{"Call-Info"};
