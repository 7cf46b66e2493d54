#include "sipobject/headers/KxSipEventHeader.h"

constinit const KxConstString KxSipEventHeader::sToken{"Event"};

static const KxSipEventHeader::Registration s_registration;
