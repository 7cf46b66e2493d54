#include "sipheaders/KxSipRequestDispositionHeader.h"

constinit const KxConstString KxSipRequestDispositionHeader::sToken{"Request-Disposition"};
constinit const KxConstString KxSipRequestDispositionHeader::sRFCCompactToken{"d"};

const HeaderID KxSipRequestDispositionHeader::kHeaderID = KxSipHeader::sNewHeaderID();
