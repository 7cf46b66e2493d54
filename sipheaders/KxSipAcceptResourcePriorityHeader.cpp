#include "sipheaders/KxSipAcceptResourcePriorityHeader.h"

constinit const KxConstString KxSipAcceptResourcePriorityHeader::sToken{"Accept-Resource-Priority"};

const HeaderID KxSipAcceptResourcePriorityHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::EmptyList);
