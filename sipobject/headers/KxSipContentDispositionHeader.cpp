#include "sipobject/headers/KxSipContentDispositionHeader.h"

constinit const KxConstString KxSipContentDispositionHeader::sToken{"Content-Disposition"};

static const KxSipContentDispositionHeader::Registration s_registration;
