#include "tools/kxsip/Endpoint.h"

std::string Endpoint::text() const {
    const bool isV6 = address.find(':') != std::string::npos;
    return (isV6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}
