#include "sipobject/headers/KxSipAcceptLanguageHeader.h"

constinit const KxConstString KxSipAcceptLanguageHeader::sToken{"Accept-Language"};

static const KxSipAcceptLanguageHeader::Registration s_registration;
