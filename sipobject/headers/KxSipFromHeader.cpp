#include "sipobject/headers/KxSipFromHeader.h"

constinit const KxConstString KxSipFromHeader::sToken{"From"};
constinit const KxConstString KxSipFromHeader::sCompactToken{"f"};

static const KxSipFromHeader::Registration s_registration;
