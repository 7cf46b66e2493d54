#include "sipobject/headers/KxSipAcceptEncodingHeader.h"

constinit const KxConstString KxSipAcceptEncodingHeader::sToken{"Accept-Encoding"};

static const KxSipAcceptEncodingHeader::Registration s_registration;
