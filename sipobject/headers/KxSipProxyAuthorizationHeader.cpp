#include "sipobject/headers/KxSipProxyAuthorizationHeader.h"

constinit const KxConstString KxSipProxyAuthorizationHeader::sToken{"Proxy-Authorization"};

static const KxSipProxyAuthorizationHeader::Registration s_registration;
