#include "sipobject/headers/KxSipMaxForwardsHeader.h"

constinit const KxConstString KxSipMaxForwardsHeader::sToken{"Max-Forwards"};

static const KxSipMaxForwardsHeader::Registration s_registration;
