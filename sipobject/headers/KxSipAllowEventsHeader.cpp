#include "sipobject/headers/KxSipAllowEventsHeader.h"

constinit const KxConstString KxSipAllowEventsHeader::sToken{"Allow-Events"};
constinit const KxConstString KxSipAllowEventsHeader::sRFCCompactToken{"u"};

static const KxSipAllowEventsHeader::Registration s_registration;
