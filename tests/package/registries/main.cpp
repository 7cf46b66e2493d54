// Prints what has registered itself: every header's name, and the class of each method's request.

#include "sipheaders/KxSipHeaderLibrary.h"
#include "sipobject/KxSipObject.h"

#include <iostream>
#include <string>
#include <typeinfo>

int main() {
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    KxSipHeaderLibrary::sEnable();
    for (const std::string_view name : KxSipHeader::sNames()) {
        std::cout << name << "\n";
    }
    for (const std::string method : {"ACK", "BYE", "CANCEL", "INFO", "INVITE", "MESSAGE", "NOTIFY", "OPTIONS", "PRACK",
                                     "REFER", "REGISTER", "SUBSCRIBE", "UPDATE"}) {
        const KxSipReading reading =
            KxSipReading::sRead(method +
                                " sip:b@example.net SIP/2.0\r\nVia: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bK1\r\n"
                                "From: <sip:a@example.com>;tag=1\r\nTo: <sip:b@example.net>\r\nCall-ID: c\r\n"
                                "Max-Forwards: 70\r\nCSeq: 1 " +
                                method + "\r\n\r\n");
        const KxSipMessage& message = *reading.message;
        const KxSipHeader& via = *message.firstNamed("v");
        std::cout << typeid(message).name() << " " << typeid(via).name() << "\n";
    }
}
