#include "sipobject/headers/KxSipSupportedHeader.h"

constinit const KxConstString KxSipSupportedHeader::sToken{"Supported"};
constinit const KxConstString KxSipSupportedHeader::sCompactToken{"k"};

static const KxSipSupportedHeader::Registration s_registration;
