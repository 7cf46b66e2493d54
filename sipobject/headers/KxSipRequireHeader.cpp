#include "sipobject/headers/KxSipRequireHeader.h"

constinit const KxConstString KxSipRequireHeader::sToken{"Require"};

static const KxSipRequireHeader::Registration s_registration;
