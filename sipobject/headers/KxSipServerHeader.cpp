#include "sipobject/headers/KxSipServerHeader.h"

constinit const KxConstString KxSipServerHeader::sToken{"Server"};

static const KxSipServerHeader::Registration s_registration;
