#include "sipheaders/KxSipReplyToHeader.h"

constinit const KxConstString KxSipReplyToHeader::sToken{"Reply-To"};

const HeaderID KxSipReplyToHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
