#include "sipobject/headers/KxSipUnsupportedHeader.h"

constinit const KxConstString KxSipUnsupportedHeader::sToken{"Unsupported"};

static const KxSipUnsupportedHeader::Registration s_registration;
