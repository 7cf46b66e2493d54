#include "sipheaders/KxSipServiceRouteHeader.h"

constinit const KxConstString KxSipServiceRouteHeader::sToken{"Service-Route"};

const HeaderID KxSipServiceRouteHeader::kHeaderID = KxSipHeader::sNewHeaderID();
