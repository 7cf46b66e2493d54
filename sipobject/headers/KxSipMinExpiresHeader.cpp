#include "sipobject/headers/KxSipMinExpiresHeader.h"

constinit const KxConstString KxSipMinExpiresHeader::sToken{"Min-Expires"};

static const KxSipMinExpiresHeader::Registration s_registration;
