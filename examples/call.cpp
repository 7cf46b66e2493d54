// A call by its messages: INVITE with SDP, CANCEL, ACK, BYE. Checks each as its receiver reads it.

#include "sipobject/KxSipObject.h"

#include <iostream>
#include <string>

namespace {

bool isRight = true;

/** Sends a message: prints it, and returns what the other side reads. */
KxHandle<KxSipMessage> send(const KxSipMessage& message) {
    KxByteArrayOutputStream out;
    message.serialize(out);
    std::cout << out.view() << "\n";
    const KxSipReading reading = KxSipReading::sRead(out.view());
    isRight = isRight && reading.isUsable() && reading.dropped.empty();
    return reading.message;
}

void check(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "wrong: " << what << "\n";
        isRight = false;
    }
}

void checkRequest(const KxHandle<KxSipMessage>& message, std::string_view method, std::string_view uri,
                  std::uint32_t number) {
    const auto* const request = message->as<KxSipRequest>();
    check(request != nullptr && request->getMethod() == method && request->getURI()->getString() == uri &&
              request->has<KxSipViaHeader>() && request->first<KxSipMaxForwardsHeader>()->getMaxForwards() == 70 &&
              request->first<KxSipCSeqHeader>()->getSeqNumber() == number,
          method.data());
}

} // namespace

int main() {
    const std::string host = "192.0.2.17";
    const std::string offer = "v=0\r\no=- 1 1 IN IP4 192.0.2.17\r\ns=-\r\nc=IN IP4 192.0.2.17\r\nt=0 0\r\n"
                              "m=audio 49170 RTP/AVP 0\r\n";
    const auto invite = KxSipInviteMessage::sBuild({.from = "<sip:ida@example.com>",
                                                    .to = "<sip:marek@example.net>",
                                                    .contact = "<sip:ida@192.0.2.17>",
                                                    .cseq = 1,
                                                    .via = {.host = host},
                                                    .contentType = "application/sdp",
                                                    .body = offer});
    const auto received = send(*invite);
    checkRequest(received, "INVITE", "sip:marek@example.net", 1);
    check(received->getBodyType() == "application/sdp" &&
              offer == std::string_view(received->getBody(), received->getStoredBodyLength()),
          "the offer");

    const auto cancel = send(*KxSipCancelMessage::sFor(*invite));
    checkRequest(cancel, "CANCEL", "sip:marek@example.net", 1);
    check(cancel->first<KxSipViaHeader>()->getBranch() == invite->first<KxSipViaHeader>()->getBranch(), "its branch");

    const KxSipRequest& asked = *received->as<KxSipRequest>(); // the CANCEL came too late
    const auto answer = send(*KxSipResponse::sBuild(asked, {.contact = "<sip:marek@198.51.100.23>"}));
    const KxSipResponse& ok = *answer->as<KxSipResponse>();
    checkRequest(send(*KxSipAckMessage::sFor(*invite, ok)), "ACK", "sip:marek@198.51.100.23", 1);

    KxSipDialog dialog = KxSipDialog::sOfCaller(*invite, ok);
    const auto bye = send(*KxSipByeMessage::sWithin(dialog, {.via = {.host = host}}));
    checkRequest(bye, "BYE", "sip:marek@198.51.100.23", 2);
    check(KxSipDialog::sOfCallee(asked, ok).matches(*bye), "the dialog");
    return isRight ? 0 : 1;
}
