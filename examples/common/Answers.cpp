#include "common/Answers.h"

#include <algorithm>

std::string printable(std::string_view text) {
    std::string result(text.substr(0, 200));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return result;
}

unsigned replyPort(const KxSipViaHeader& via, unsigned source) {
    const bool isNamed = !via.isRPortPresent() && via.getPort() != 0 && via.getPort() <= 65535;
    return isNamed ? via.getPort() : source;
}
