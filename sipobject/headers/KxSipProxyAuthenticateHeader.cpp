#include "sipobject/headers/KxSipProxyAuthenticateHeader.h"

constinit const KxConstString KxSipProxyAuthenticateHeader::sToken{"Proxy-Authenticate"};

static const KxSipProxyAuthenticateHeader::Registration s_registration;
