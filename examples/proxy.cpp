// One step of a stateless proxy: a request on its way, and its response on the way back.

#include "sipobject/KxSipObject.h"

#include <iostream>
#include <string>

namespace {

constexpr const char* kHost = "192.0.2.1";
constexpr const char* kReceived = "INVITE sip:marek@example.net SIP/2.0\r\n"
                                  "v: SIP/2.0/UDP 192.0.2.17:5070;branch=z9hG4bK1;rport\r\n"
                                  "Route: <sip:192.0.2.1;lr>, <sip:p2.example.net;lr>\r\n"
                                  "Max-Forwards: 1\r\n"
                                  "From: <sip:ida@example.com>;tag=7\r\n"
                                  "To: <sip:marek@example.net>\r\n"
                                  "Call-ID: c1@192.0.2.17\r\n"
                                  "CSeq: 1 INVITE\r\n\r\n";

std::string printed(const KxSipMessage& message) {
    std::cout << message.getText() << "\n";
    return message.getText();
}

/** The response to send back, or nil if the request can be sent on. */
KxHandle<KxSipResponse> forward(const KxSipReading& reading, KxSipRequest& request) {
    if (!reading.isUsable()) { // Max-Forwards of 0, too
        return reading.response();
    }
    const KxString branch = KxSipBranch::sStateless(request);
    if (auto* const hops = request.first<KxSipMaxForwardsHeader>()) {
        hops->setMaxForwards(hops->getMaxForwards() - 1);
    } else {
        request.addHeader(KxMake<KxSipMaxForwardsHeader>(70U), false);
    }
    KxSipViaHeader& from = *request.first<KxSipViaHeader>();
    from.setReceived("192.0.2.99");
    from.setParameter("rport", std::to_string(40000));
    if (const auto* const route = request.first<KxSipRouteHeader>()) {
        const auto* const url = route->getNameAddress()->getURI()->as<KxSipURL>();
        if (url != nullptr && url->getHost() == kHost) {
            request.removeFirst<KxSipRouteHeader>();
        }
    }
    request.addHeader(KxMake<KxSipRecordRouteHeader>("<sip:192.0.2.1;lr>"), true);
    request.addHeader(KxMake<KxSipViaHeader>(kHost, 5060U, "UDP"), true);
    request.first<KxSipViaHeader>()->setBranch(branch);
    return {};
}

} // namespace

int main() {
    const KxSipReading first = KxSipReading::sRead(kReceived);
    const KxSipReading again = KxSipReading::sRead(kReceived);
    KxSipRequest& request = *first.message->as<KxSipRequest>();
    KxSipRequest& repeated = *again.message->as<KxSipRequest>();
    if (!forward(first, request).isNil() || !forward(again, repeated).isNil()) {
        return 1;
    }
    const std::string sent = printed(request);
    const KxSipReading next = KxSipReading::sRead(sent); // the next hop; a proxy there must refuse it
    std::string answer = printed(*next.response());
    answer.replace(answer.find("Via"), 3, "v");
    const KxSipReading back = KxSipReading::sRead(answer);
    const bool isRemoved = back.message->removeFirst<KxSipViaHeader>() == 1;
    const auto* const via = back.message->first<KxSipViaHeader>();
    const bool isRight = sent == printed(repeated) && next.statusCode == 483 &&
                         next.message->first<KxSipRouteHeader>()->getValueText() == "<sip:p2.example.net;lr>" &&
                         isRemoved && via != nullptr && via->getParameter("rport") == "40000" &&
                         !back.message->hasNamed("Record-Route");
    return isRight ? 0 : 1;
}
