// A host with the further headers: it reads who calls, and tells the next hop from whom the call was diverted.

#include "sipheaders/KxSipHeaders.h"
#include "sipobject/messages/KxSipReading.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <iostream>
#include <string>

namespace {

const std::string kInvite = "INVITE sip:desk@example.net SIP/2.0\r\n"
                            "Via: SIP/2.0/TLS [2001:db8::1];branch=z9hG4bK1\r\n"
                            "Max-Forwards: 70\r\n"
                            "From: \"Anonymous\" <sip:anonymous@anonymous.invalid>;tag=1\r\n"
                            "To: <sip:desk@example.net>\r\n"
                            "Call-ID: c@example.com\r\n"
                            "CSeq: 1 INVITE\r\n"
                            "Contact: <sip:gw@[2001:db8::1]>\r\n"
                            "P-Asserted-Identity: \"Lindqvist, Ida\"<sip:+4612@example.com;user=phone>,<tel:+4612>\r\n"
                            "Content-Length: 0\r\n\r\n";

bool isRefusedInTheClassicGrammar() {
    try {
        KxSipHeaderLibrary::sEnable();
    } catch (const KxHandle<KxException>&) {
        return !KxSipHeaderLibrary::sIsEnabled();
    }
    return false;
}

/** The request for the next hop; empty if the caller is not known. */
std::string diverted(const std::string& bytes) {
    const KxSipReading reading = KxSipReading::sRead(bytes);
    const auto* const caller =
        reading.message.isNil() ? nullptr : reading.message->first<KxSipPAssertedIdentityHeader>();
    if (caller == nullptr || caller->getURL().isNil()) {
        return {};
    }
    std::cout << "from " << caller->getDisplayText() << ", " << caller->getURL()->getUser() << "\n";

    const auto callee = reading.message->first<KxSipToHeader>()->getNameAddress()->getURL();
    const auto diversion = KxMake<KxSipDiversionHeader>(callee, "unconditional");
    diversion->setCounter(1);
    reading.message->addHeader(diversion, true);
    KxByteArrayOutputStream out;
    reading.message->serialize(out);
    return std::string(out.view());
}

} // namespace

int main() {
    const bool isRefused = isRefusedInTheClassicGrammar();
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    KxSipHeaderLibrary::sEnable();

    const std::string request = diverted(kInvite);
    std::cout << request;
    const bool isComplete =
        request.find("Diversion: <sip:desk@example.net>;reason=unconditional;counter=1\r\n") != std::string::npos &&
        request.find("\"Lindqvist, Ida\"<sip:+4612@example.com;user=phone>\r\n") != std::string::npos;
    return isRefused && isComplete ? 0 : 1;
}
