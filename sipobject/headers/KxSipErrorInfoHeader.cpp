#include "sipobject/headers/KxSipErrorInfoHeader.h"

constinit const KxConstString KxSipErrorInfoHeader::sToken{"Error-Info"};

static const KxSipErrorInfoHeader::Registration s_registration;
