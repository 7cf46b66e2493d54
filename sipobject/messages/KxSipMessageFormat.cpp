#include "sipobject/messages/KxSipMessageFormat.h"

#include "sipobject/messages/KxSipMessage.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace {

/** Writes the bytes unchanged, whatever the width and locale of the stream. */
void write(std::ostream& out, std::string_view bytes) {
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/** The text with every CR LF replaced by LF; any other CR is kept. */
std::string withPlainLineFeeds(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = std::min(bytes.find("\r\n", at), bytes.size());
        text.append(bytes.substr(at, end - at));
        if (end != bytes.size()) {
            text.push_back('\n');
        }
        at = end + 2;
    }
    return text;
}

} // namespace

/** If the message cannot be written completely (credentials without a response may name an unsupported algorithm),
    writes the part before the failure, and the error: untrusted input must not make logging fail. */
std::ostream& operator<<(std::ostream& out, const KxSipMessage& message) {
    KxByteArrayOutputStream wire;
    try {
        message.serialize(wire);
        write(out, withPlainLineFeeds(wire.view()));
    } catch (const KxHandle<KxException>& failure) {
        write(out, withPlainLineFeeds(wire.view()));
        out << failure << '\n';
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, const KxHandle<KxSipMessage>& message) {
    return message.isNil() ? out : out << *message;
}

std::ostream& operator<<(std::ostream& out, const KxHandle<KxByteArray>& bytes) {
    if (!bytes.isNil()) {
        write(out, bytes->view());
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, const KxHandle<KxException>& failure) {
    if (failure.isNil()) {
        return out;
    }
    KxByteArrayOutputStream text;
    failure->display(text, false);
    return out << text.toByteArray();
}

void KxSipMessageFormat::sWrite(std::ostream& out, const KxSipMessage& message, bool received, const unsigned* port,
                                const KxInetAddress* address) {
    const KxString host = (address != nullptr ? *address : message.getConnectionAddress()).getHostAddress();
    write(out, std::string(received ? "RECEIVED" : "SENDING")
                   .append(" SIP MESSAGE")
                   .append(message.isRequest() ? " (REQUEST)" : " (RESPONSE)")
                   .append(" via ")
                   .append(KxSocketImpl::getTransportString(message.getConnectionTransport()).view())
                   .append(received ? " from " : " to ")
                   .append(host.view())
                   .append(":")
                   .append(std::to_string(port != nullptr ? *port : message.getConnectionPort()))
                   .append(" :\n"));
    out << message << '\n';
}
