#include "sipobject/headers/KxSipPriorityHeader.h"

constinit const KxConstString KxSipPriorityHeader::sToken{"Priority"};

static const KxSipPriorityHeader::Registration s_registration;
