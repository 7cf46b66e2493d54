#include "sipobject/headers/KxSipAcceptHeader.h"

constinit const KxConstString KxSipAcceptHeader::sToken{"Accept"};

static const KxSipAcceptHeader::Registration s_registration;
