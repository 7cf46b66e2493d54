#include "sipheaders/KxSipReasonHeader.h"

constinit const KxConstString KxSipReasonHeader::sToken{"Reason"};

const HeaderID KxSipReasonHeader::kHeaderID = KxSipHeader::sNewHeaderID();
