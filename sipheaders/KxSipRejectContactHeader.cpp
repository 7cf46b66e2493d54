#include "sipheaders/KxSipRejectContactHeader.h"

constinit const KxConstString KxSipRejectContactHeader::sToken{"Reject-Contact"};
constinit const KxConstString KxSipRejectContactHeader::sRFCCompactToken{"j"};

const HeaderID KxSipRejectContactHeader::kHeaderID = KxSipHeader::sNewHeaderID();
