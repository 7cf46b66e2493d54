#include "sipheaders/KxSipGeolocationHeader.h"

constinit const KxConstString KxSipGeolocationHeader::sToken{"Geolocation"};

const HeaderID KxSipGeolocationHeader::kHeaderID = KxSipHeader::sNewHeaderID();
