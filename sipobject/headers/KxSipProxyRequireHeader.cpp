#include "sipobject/headers/KxSipProxyRequireHeader.h"

constinit const KxConstString KxSipProxyRequireHeader::sToken{"Proxy-Require"};

static const KxSipProxyRequireHeader::Registration s_registration;
