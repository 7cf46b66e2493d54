#include "sipheaders/KxSipSecurityServerHeader.h"

constinit const KxConstString KxSipSecurityServerHeader::sToken{"Security-Server"};

const HeaderID KxSipSecurityServerHeader::kHeaderID = KxSipHeader::sNewHeaderID();
