// Messages in readable form, for logs.

#include "core/AceCleanupLogger.h"
#include "core/Logger.h"
#include "core/TraceScope.h"
#include "sipobject/messages/KxSipMessage.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <ostream>
#include <sstream>
#include <string>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipMessage"};
constexpr int kLogLine = 179; // log configurations identify the events of logMessage by this line number

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

void KxSipMessage::formatMessage(std::ostream& out, bool received, unsigned* port, KxInetAddress* address,
                                 Oskan::LogLevel) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::formatMessage");
    const KxString host = (address != nullptr ? *address : m_connectionAddress).getHostAddress();
    write(out, std::string(received ? "RECEIVED" : "SENDING")
                   .append(" SIP MESSAGE")
                   .append(isRequest() ? " (REQUEST)" : " (RESPONSE)")
                   .append(" via ")
                   .append(KxSocketImpl::getTransportString(m_connectionTransport).view())
                   .append(received ? " from " : " to ")
                   .append(host.view())
                   .append(":")
                   .append(std::to_string(port != nullptr ? *port : m_connectionPort))
                   .append(" :\n"));
    out << *this << '\n';
}

void KxSipMessage::logMessage(Oskan::Logger& logger, bool received, unsigned* port, KxInetAddress* address,
                              Oskan::LogLevel level) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::logMessage");
    if (logger.isEnabledFor(level)) {
        std::ostringstream text;
        formatMessage(text, received, port, address, level);
        logger.log(level, text.str(), "KxSipMessage", kLogLine);
    }
}
