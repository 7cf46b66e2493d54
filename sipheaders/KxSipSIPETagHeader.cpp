#include "sipheaders/KxSipSIPETagHeader.h"

constinit const KxConstString KxSipSIPETagHeader::sToken{"SIP-ETag"};

const HeaderID KxSipSIPETagHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
