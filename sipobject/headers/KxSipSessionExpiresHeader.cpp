#include "sipobject/headers/KxSipSessionExpiresHeader.h"

constinit const KxConstString KxSipSessionExpiresHeader::sToken{"Session-Expires"};
constinit const KxConstString KxSipSessionExpiresHeader::sCompactToken{"x"};

static const KxSipSessionExpiresHeader::Registration s_registration;
