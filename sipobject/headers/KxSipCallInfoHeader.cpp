#include "sipobject/headers/KxSipCallInfoHeader.h"

constinit const KxConstString KxSipCallInfoHeader::sToken{"Call-Info"};

static const KxSipCallInfoHeader::Registration s_registration;
