#include "sipobject/headers/KxSipAlertInfoHeader.h"

constinit const KxConstString KxSipAlertInfoHeader::sToken{"Alert-Info"};

static const KxSipAlertInfoHeader::Registration s_registration;
