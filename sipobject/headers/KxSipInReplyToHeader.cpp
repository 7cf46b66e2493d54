#include "sipobject/headers/KxSipInReplyToHeader.h"

constinit const KxConstString KxSipInReplyToHeader::sToken{"In-Reply-To"};

static const KxSipInReplyToHeader::Registration s_registration;
