// Reading a message: the part of KxSipMessage that handles untrusted input.

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipParseKeepAliveException.h"
#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/messages/KxSipMessage.h"
#include "sipobject/messages/KxSipUnknownRequest.h"
#include "util/KxErrorStream.h"
#include "util/KxInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

#include <algorithm>
#include <limits>
#include <string>
#include <typeinfo>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipMessage"};
constexpr KxCharSet kTokenEnd(" /\t\r\n");

/** The message classes by start token. Filled by the registrations, and only read once the library is loaded. */
struct Registry {
    struct Entry {
        KxString token;
        KxSipMessage::Creator creator;
        const Entry* next;
    };
    const Entry* first;
};
constinit Registry s_registry{nullptr};

KxSipMessage::Creator findCreator(std::string_view token) {
    for (const Registry::Entry* entry = s_registry.first; entry != nullptr; entry = entry->next) {
        if (entry->token == token) {
            return entry->creator;
        }
    }
    return nullptr;
}

/** Whether the stream still has that many bytes. */
bool holds(KxInputStream& in, std::size_t count) {
    while (in.window().size() < count && in.extendWindow()) {
    }
    return in.window().size() >= count;
}

} // namespace

void KxSipMessage::sAddConstructor(const KxString& token, Creator creator) {
    if (findCreator(token) == nullptr) {
        s_registry.first = new Registry::Entry{token, creator, s_registry.first}; // never freed
    }
}

KxHandle<KxSipMessage> KxSipMessage::sConstructFrom(KxInputStream& in) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipMessage::sConstructFrom");
    if (in.peek() < 0) {
        KxSipParseError::sThrow("SIP Method Token Expected");
    }
    KxScannedText scanned;
    const std::string_view text = scanned.until(in, kTokenEnd);
    const KxString token(text.substr(0, text.find('\0'))); // up to a NUL, since the message is given a C string
    if (token.empty()) {
        s_logger.log(Oskan::LogLevel::Debug, "KxSipMessage::sConstructFrom : datagram starting with whitespace: "
                                             "treating as keep-alive ");
        KxSipParseKeepAliveException::sThrow("Keep-alive datagram encountered");
    }
    const Creator creator = findCreator(token);
    KxHandle<KxSipMessage> message(creator != nullptr ? creator() : new KxSipUnknownRequest);
    message->parse(token.c_str(), in);
    return message;
}

void KxSipMessage::parse(const char*, KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::parse");
    try {
        parseStartLine(in);
    } catch (const KxHandle<KxSipParseKeepAliveException>&) {
        throw;
    } catch (const KxHandle<KxException>&) {
        m_status = m_status == KX_STATUS_VALID ? KX_STATUS_UNUSABLE : m_status;
        throw;
    }
    try {
        parseHeaders(in);
    } catch (const KxHandle<KxException>& failure) {
        noteFault("Exception occurred while parsing headers of message: ", failure->getExceptionMessage());
        m_status = m_status == KX_STATUS_VALID ? KX_STATUS_UNUSABLE : m_status;
        return;
    }
    try {
        parseBody(in);
    } catch (const KxHandle<KxException>& failure) {
        noteFault("KxException Occurred while parsing body of message: ", failure->getExceptionMessage());
        m_status = KX_STATUS_INCOMPLETE;
        throw;
    }
    if (getHeaderByID(KxHeaderIDs::kContentLength).isNil()) {
        m_headers.addUnlisted(KxMake<KxSipContentLengthHeader>(0U));
    }
    if (m_status == KX_STATUS_VALID) {
        checkValidity();
    }
}

void KxSipMessage::noteFault(const char* what, const KxString& why) {
    KxOutputStream& notes = KxErrorStream::sGetDefault().getDebugStream("KxSipMessage", 0);
    notes << what << why << endl;
    notes.flush();
}

/** asynchAddHeader for a header that was just read. */
[[gnu::always_inline]] inline void KxSipMessage::addRead(KxHandle<KxSipHeader>&& header) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::asynchAddHeader");
    OSKAN_ASSERT(header.get()->getHeaderID() < KxHeaderIDs::kCount);
    m_headers.addRead(std::move(header));
}

void KxSipMessage::parseHeaders(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::parseHeaders");
    const auto drop = [this](const auto& why) {
        if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
            s_logger.log(Oskan::LogLevel::Debug,
                         std::string("Caught KxException from KxSipHeader::sConstructFrom(): ").append(why()));
        }
        m_status = m_status == KX_STATUS_VALID ? KX_STATUS_INCOMPLETE : m_status;
    };
    KxSipLine line;
    for (int c = in.peek(); c >= 0; c = in.peek()) {
        if (c == '\r' || c == '\n') {
            in.consume(1);
            if (c == '\n') {
                break;
            }
            continue;
        }
        try {
            KxHandle<KxSipHeader> header;
            const KxSipFault fault = KxSipHeader::sConstructFrom(in, line, header);
            if (!fault) [[likely]] {
                addRead(std::move(header));
            } else {
                drop([&fault] { return fault.message(); });
            }
        } catch (const KxHandle<KxException>& failure) {
            drop([&failure] { return failure->getExceptionMessage().view(); });
        }
    }
    if (m_status == KX_STATUS_VALID && !acceptsOwnBodyType()) {
        m_status = KX_STATUS_UNUSABLE;
    }
}

/** False if the message has Accept headers and none of them is exactly the type of its own body; wildcards do not
    match. */
bool KxSipMessage::acceptsOwnBodyType() const {
    const KxHandle<KxSipContentTypeHeader> type = getContentTypeHeader();
    const KxSipHeader* value = getHeaderByID(KxHeaderIDs::kAccept).get();
    if (type.isNil() || value == nullptr) {
        return true;
    }
    for (; value != nullptr; value = value->getNext().get()) {
        if (typeid(*value) != typeid(KxSipAcceptHeader)) {
            continue; // an application's own class with the identifier of Accept
        }
        const auto* const accepted = static_cast<const KxSipAcceptHeader*>(value);
        if (accepted->getType() == type->getType() && accepted->getSubType() == type->getSubType()) {
            return true;
        }
    }
    return false;
}

void KxSipMessage::parseBody(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipMessage::parseBody");
    if (!getHeaderByID(KxHeaderIDs::kContentLength).isNil()) {
        const std::size_t length = getBodyLength();
        const bool cameWithURI = hasBody() && !in.fill(); // "?body=" in the Request-URI, and none after the headers
        if (length != 0 && !cameWithURI) {
            if (!holds(in, length)) {
                KxSipParseError::sThrow("message body is shorter than Content-Length");
            }
            readBody(in, length);
        }
        return;
    }
    while (in.extendWindow()) {
    }
    const std::size_t length = in.window().size();
    const auto told = std::min<std::size_t>(length, std::numeric_limits<std::uint32_t>::max());
    asynchAddHeader(KxMake<KxSipContentLengthHeader>(static_cast<std::uint32_t>(told)), false);
    if (length != 0) {
        readBody(in, length);
    }
}

void KxSipMessage::readBody(KxInputStream& in, std::size_t length) {
    m_body = bodyOf(in.window().data(), length);
    m_bodyStored = length;
    in.consume(length);
}
