#include "sipobject/headers/KxSipRSeqHeader.h"

constinit const KxConstString KxSipRSeqHeader::sToken{"RSeq"};

static const KxSipRSeqHeader::Registration s_registration;
