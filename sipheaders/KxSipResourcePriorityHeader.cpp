#include "sipheaders/KxSipResourcePriorityHeader.h"

constinit const KxConstString KxSipResourcePriorityHeader::sToken{"Resource-Priority"};

const HeaderID KxSipResourcePriorityHeader::kHeaderID = KxSipHeader::sNewHeaderID();
