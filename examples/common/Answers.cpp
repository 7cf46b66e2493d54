#include "common/Answers.h"

#include "sipobject/address/KxSipURL.h"

#include <algorithm>

std::string printable(std::string_view text) {
    std::string result(text.substr(0, 200));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return result;
}

std::string hostPort(const std::string& host, unsigned port) {
    const bool isIPv6 = host.find(':') != std::string::npos;
    return (isIPv6 ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

bool isSecure(const KxSipRequest& request) {
    const KxHandle<KxURI> uri = request.getURI();
    const KxSipURL* const url = uri.isNil() ? nullptr : uri->as<KxSipURL>();
    return url != nullptr && url->isSecure();
}

bool lacksValues(const KxSipReading& reading) {
    return std::any_of(reading.dropped.begin(), reading.dropped.end(), [](const KxSipReading::DroppedLine& line) {
        const std::size_t colon = line.text.find(':');
        return colon == std::string_view::npos || line.text.find_first_not_of(" \t\r\n", colon + 1) != line.text.npos;
    });
}

unsigned replyPort(const KxSipViaHeader& via, unsigned source) {
    const bool isNamed = !via.isRPortPresent() && via.getPort() != 0 && via.getPort() <= 65535;
    return isNamed ? via.getPort() : source;
}
