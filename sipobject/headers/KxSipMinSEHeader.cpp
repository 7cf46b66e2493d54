#include "sipobject/headers/KxSipMinSEHeader.h"

constinit const KxConstString KxSipMinSEHeader::sToken{"Min-SE"};

static const KxSipMinSEHeader::Registration s_registration;
