#include "sipheaders/KxSipMaxBreadthHeader.h"

constinit const KxConstString KxSipMaxBreadthHeader::sToken{"Max-Breadth"};

const HeaderID KxSipMaxBreadthHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
