#include "sipheaders/KxSipAcceptContactHeader.h"

constinit const KxConstString KxSipAcceptContactHeader::sToken{"Accept-Contact"};
constinit const KxConstString KxSipAcceptContactHeader::sRFCCompactToken{"a"};

const HeaderID KxSipAcceptContactHeader::kHeaderID = KxSipHeader::sNewHeaderID();
