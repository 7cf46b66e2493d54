#include "sipheaders/KxSipSubscriptionStateHeader.h"

constinit const KxConstString KxSipSubscriptionStateHeader::sToken{"Subscription-State"};

const HeaderID KxSipSubscriptionStateHeader::kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once);
