// A plug-in that uses the library, for host.cpp.

#include "sipheaders/KxSipHeaders.h"
#include "sipobject/KxSipObject.h"

#include <string_view>
#include <thread>
#include <vector>

namespace {

// A literal, since the threads run on after the destructors of globals.
constexpr std::string_view kText =
    "INVITE sip:b@h SIP/2.0\r\nVia: SIP/2.0/UDP h;branch=z9hG4bK1\r\nFrom: <sip:a@h>;tag=1\r\n"
    "To: <sip:b@h>\r\nCall-ID: c\r\nCSeq: 1 INVITE\r\nContact: <sip:a@h>\r\nX-A: b\r\n"
    "Content-Length: 0\r\n\r\n";

std::vector<KxHandle<KxSipMessage>> g_held; // still there when the process ends

KxHandle<KxSipMessage> work() {
    const KxHandle<KxSipMessage> message = KxSipReading::sRead(kText).message;
    message->addHeader(KxMake<KxSipSupportedHeader>("a tag of its own block, which is long"), false);
    KxByteArrayOutputStream out;
    message->serialize(out);
    return message->createKey().empty() ? nullptr : message;
}

} // namespace

extern "C" [[gnu::visibility("default")]] bool kxWork(bool holds) {
    const KxHandle<KxSipMessage> message = work();
    if (holds) {
        g_held.push_back(message);
    }
    return !message.isNil();
}

/** Starts a thread that works until the process has ended. */
extern "C" [[gnu::visibility("default")]] void kxWorkOn() {
    std::thread([] {
        while (true) {
            work();
        }
    }).detach();
}
