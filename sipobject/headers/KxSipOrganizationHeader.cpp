#include "sipobject/headers/KxSipOrganizationHeader.h"

constinit const KxConstString KxSipOrganizationHeader::sToken{"Organization"};

static const KxSipOrganizationHeader::Registration s_registration;
