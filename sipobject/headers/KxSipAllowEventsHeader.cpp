#include "sipobject/headers/KxSipAllowEventsHeader.h"

constinit const KxConstString KxSipAllowEventsHeader::sToken{"Allow-Events"};

static const KxSipAllowEventsHeader::Registration s_registration;
