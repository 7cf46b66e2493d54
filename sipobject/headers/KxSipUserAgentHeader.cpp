#include "sipobject/headers/KxSipUserAgentHeader.h"

constinit const KxConstString KxSipUserAgentHeader::sToken{"User-Agent"};

static const KxSipUserAgentHeader::Registration s_registration;
