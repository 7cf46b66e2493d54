#include "common/Answers.h"

#include "sipobject/KxSipTag.h"
#include "util/KxByteArrayOutputStream.h"

#include <algorithm>

std::string printable(std::string_view text) {
    std::string result(text.substr(0, 200));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return result;
}

KxHandle<KxSipResponse> makeResponse(int code, const KxHandle<KxSipRequest>& request) {
    auto response = KxMake<KxSipResponse>(code, request, nullptr, nullptr, 0U);
    if (!response->getToHeader()->isTagPresent()) {
        response->getToHeader()->setTag(KxSipTag(nullptr));
    }
    return response;
}

void noteSource(KxSipViaHeader& via, const std::string& host, unsigned port) {
    via.setReceived(KxString(host));
    if (via.isRPortPresent()) {
        via.setParameter("rport", KxString(std::to_string(port)));
    }
}

unsigned replyPort(const KxSipViaHeader& via, unsigned source) {
    const bool isNamed = !via.isRPortPresent() && via.getPort() != 0 && via.getPort() <= 65535;
    return isNamed ? via.getPort() : source;
}

std::string bytesOf(const KxSipMessage& message) {
    KxByteArrayOutputStream out;
    message.serialize(out);
    return std::string(out.view());
}
