// Prints the Contact values of a captured message: SIP and tel URLs, and the wildcard.

#include "sipobject/KxSipObject.h"

#include <iostream>
#include <sstream>
#include <string>

namespace {

constexpr const char* kCaptured = "REGISTER sip:example.com SIP/2.0\r\n"
                                  "Via: SIP/2.0/UDP 192.0.2.17;branch=z9hG4bK1\r\n"
                                  "From: <sip:ida@example.com>;tag=7\r\n"
                                  "To: <sip:ida@example.com>\r\n"
                                  "Call-ID: c1@192.0.2.17\r\n"
                                  "CSeq: 1 REGISTER\r\n"
                                  "m: \"Ida\" <sip:ida@192.0.2.17:5070>;expires=60, <tel:+46-8-555>;q=0.5\r\n"
                                  "Contact: <mailto:ida@example.com>\r\n"
                                  "Contact: *\r\n\r\n";

constexpr const char* kExpected = "sip \"Ida\" ida 192.0.2.17:5070, expires 60\n"
                                  "tel tel:+46-8-555, q 0.5\n"
                                  "other mailto:ida@example.com\n"
                                  "all\n";

void print(std::ostream& out, const KxSipContactHeader& contact) {
    if (contact.isWildCard()) {
        out << "all\n";
        return;
    }
    const KxSipNameAddress& address = *contact.getNameAddress();
    if (const auto* const url = address.getURI()->as<KxSipURL>()) {
        out << "sip " << address.getDisplayName() << " " << url->getUser() << " " << url->getHost() << ":"
            << url->getPort();
    } else {
        out << (address.getURI()->as<KxTelURL>() != nullptr ? "tel " : "other ") << address.getURLString();
    }
    for (const auto& [name, value] : *contact.getParameters()) {
        out << ", " << name << " " << value;
    }
    out << "\n";
}

} // namespace

int main() {
    const KxSipReading reading = KxSipReading::sRead(kCaptured);
    if (reading.message.isNil()) {
        std::cerr << reading.errorText << "\n";
        return 1;
    }
    std::ostringstream out;
    for (const KxSipContactHeader& contact : reading.message->values<KxSipContactHeader>()) {
        print(out, contact);
    }
    std::cout << out.str();
    return out.str() == kExpected ? 0 : 1;
}
