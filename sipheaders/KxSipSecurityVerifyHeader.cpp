#include "sipheaders/KxSipSecurityVerifyHeader.h"

constinit const KxConstString KxSipSecurityVerifyHeader::sToken{"Security-Verify"};

const HeaderID KxSipSecurityVerifyHeader::kHeaderID = KxSipHeader::sNewHeaderID();
