#include "sipheaders/KxSipPathHeader.h"

constinit const KxConstString KxSipPathHeader::sToken{"Path"};

const HeaderID KxSipPathHeader::kHeaderID = KxSipHeader::sNewHeaderID();
