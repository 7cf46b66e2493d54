#include "sipobject/headers/KxSipContentEncodingHeader.h"

constinit const KxConstString KxSipContentEncodingHeader::sToken{"Content-Encoding"};
constinit const KxConstString KxSipContentEncodingHeader::sCompactToken{"e"};

static const KxSipContentEncodingHeader::Registration s_registration;
