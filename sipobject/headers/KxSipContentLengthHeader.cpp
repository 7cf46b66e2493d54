#include "sipobject/headers/KxSipContentLengthHeader.h"

constinit const KxConstString KxSipContentLengthHeader::sToken{"Content-Length"};
constinit const KxConstString KxSipContentLengthHeader::sCompactToken{"l"};

static const KxSipContentLengthHeader::Registration s_registration;
