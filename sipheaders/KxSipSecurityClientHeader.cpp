#include "sipheaders/KxSipSecurityClientHeader.h"

constinit const KxConstString KxSipSecurityClientHeader::sToken{"Security-Client"};

const HeaderID KxSipSecurityClientHeader::kHeaderID = KxSipHeader::sNewHeaderID();
