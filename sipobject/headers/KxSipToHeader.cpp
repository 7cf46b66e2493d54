#include "sipobject/headers/KxSipToHeader.h"

constinit const KxConstString KxSipToHeader::sToken{"To"};
constinit const KxConstString KxSipToHeader::sCompactToken{"t"};

static const KxSipToHeader::Registration s_registration;
