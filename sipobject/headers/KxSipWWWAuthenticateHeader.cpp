#include "sipobject/headers/KxSipWWWAuthenticateHeader.h"

constinit const KxConstString KxSipWWWAuthenticateHeader::sToken{"WWW-Authenticate"};

static const KxSipWWWAuthenticateHeader::Registration s_registration;
