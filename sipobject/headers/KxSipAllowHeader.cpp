#include "sipobject/headers/KxSipAllowHeader.h"

constinit const KxConstString KxSipAllowHeader::sToken{"Allow"};

static const KxSipAllowHeader::Registration s_registration;
