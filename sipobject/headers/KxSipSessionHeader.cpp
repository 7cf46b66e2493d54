#include "sipobject/headers/KxSipSessionHeader.h"

constinit const KxConstString KxSipSessionHeader::sToken{"Session"};

static const KxSipSessionHeader::Registration s_registration;
