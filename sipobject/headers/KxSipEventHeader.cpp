#include "sipobject/headers/KxSipEventHeader.h"

constinit const KxConstString KxSipEventHeader::sToken{"Event"};
constinit const KxConstString KxSipEventHeader::sRFCCompactToken{"o"};

static const KxSipEventHeader::Registration s_registration;
