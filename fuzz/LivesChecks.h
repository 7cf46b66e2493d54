#pragma once

#include "core/MemAccounts.h"
#include "fuzz/LivesSteps.h"
#include "sipobject/KxSipObject.h"

#include <algorithm>
#include <string>
#include <vector>

/** Collects the objects of messages that may be part of one message only. */
class LivesOwners {
public:
    /** @param hasLists whether parameter lists count, too; they are shared by no copy from then on. */
    explicit LivesOwners(bool hasLists) : m_hasLists(hasLists) {}

    void take(const KxSipMessage& message) {
        if (const auto* const request = dynamic_cast<const KxSipRequest*>(&message)) {
            takeURI(request->getURI().get());
        }
        for (const HeaderID id : message.getHeaderOrder()) {
            for (const KxSipHeader* value = message.getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                m_objects.push_back(value);
                takeParts(*value);
            }
        }
    }
    void check(std::string_view text) {
        std::sort(m_objects.begin(), m_objects.end());
        if (std::adjacent_find(m_objects.begin(), m_objects.end()) != m_objects.end()) {
            fail("no object is part of two messages", text, "");
        }
    }

private:
    void takeURI(const KxURI* uri) {
        if (uri != nullptr) {
            m_objects.push_back(uri);
            if (const auto* const url = dynamic_cast<const KxSipURL*>(uri); url != nullptr && m_hasLists) {
                m_objects.push_back(url->getParameters().get());
                m_objects.push_back(url->getHeaders().get());
            }
        }
    }
    template <class... H>
    void takeOf(const KxSipHeader& header) {
        const auto takeAs = [&]<class T>(const T* typed) {
            if (typed == nullptr) {
                return;
            }
            if constexpr (requires { typed->getNameAddress(); }) {
                m_objects.push_back(typed->getNameAddress().get());
                takeURI(typed->getNameAddress()->getURI().get());
            }
            if (m_hasLists) {
                m_objects.push_back(typed->getParameters().get());
            }
        };
        ((header.getHeaderID() == H::kHeaderID ? takeAs(dynamic_cast<const H*>(&header)) : void()), ...);
    }
    void takeParts(const KxSipHeader& header) {
        takeOf<KxSipViaHeader, KxSipFromHeader, KxSipToHeader, KxSipContactHeader, KxSipRouteHeader,
               KxSipRecordRouteHeader, KxSipReferredByHeader, KxSipContentTypeHeader, KxSipEventHeader,
               KxSipSessionExpiresHeader, KxSipAcceptHeader>(header);
        const HeaderID id = header.getHeaderID();
        if (id == KxHeaderIDs::kAuthorization || id == KxHeaderIDs::kProxyAuthorization) {
            if (const auto* const typed = dynamic_cast<const KxSipAuthorizationHeader*>(&header)) {
                takeShared(typed->getCredentials().get());
            }
        } else if (id == KxHeaderIDs::kWWWAuthenticate || id == KxHeaderIDs::kProxyAuthenticate) {
            if (const auto* const typed = dynamic_cast<const KxSipAuthenticateHeader*>(&header)) {
                takeShared(typed->getChallenge().get());
            }
        }
    }
    void takeShared(const KxObject* object) {
        if (object != nullptr) {
            m_objects.push_back(object);
        }
    }

    bool m_hasLists;
    std::vector<const void*> m_objects;
};

/** The messages that were written one after the other, as a peer reads them from a stream. */
class LivesWire {
public:
    /** Adds a message, unless it can't be framed: it has no start line, or no Content-Length of its body, or a host has
        called another header so, or has read a name that continues the line before. */
    void take(const KxSipMessage& message, const std::string& text) {
        const KxSipHeader* const length = message.getHeaderByID(KxHeaderIDs::kContentLength).get();
        const auto* const request = message.as<KxSipRequest>();
        const bool hasStart = request == nullptr || (!request->getURI().isNil() && *request->getMethod() != '\0');
        const std::size_t stored = message.hasBody() ? message.getStoredBodyLength() : 0;
        if (length == nullptr || !length->getNext().isNil() || message.getBodyLength() > stored ||
            message.getContentLengthHeader().isNil() || !hasStart) {
            return;
        }
        for (const HeaderID id : message.getHeaderOrder()) {
            for (const KxSipHeader* value = message.getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                const std::string_view name = KxAscii::trim(value->getToken().view());
                const bool isLength = KxAscii::equalsNoCase(name, "l") || KxAscii::equalsNoCase(name, "Content-Length");
                if (isLength != (id == KxHeaderIDs::kContentLength) || name.empty()) {
                    return;
                }
            }
        }
        m_texts.push_back(text);
        m_stream += text;
    }
    /** @param cut where the stream is cut in two.
        @param reads whether the messages are read, too. */
    void check(std::size_t cut, bool reads) const {
        KxSipFramer framer;
        const std::string_view stream = m_stream;
        const std::string_view pieces[] = {stream.substr(0, cut % (stream.size() + 1)),
                                           stream.substr(cut % (stream.size() + 1))};
        std::size_t found = 0;
        for (std::string_view piece : pieces) {
            for (KxSipFramer::Frame frame = framer.next(piece); frame.kind != KxSipFramer::Kind::Incomplete;
                 frame = framer.next(piece)) {
                same("a message that was written is one frame", found < m_texts.size() ? m_texts[found] : "",
                     frame.kind == KxSipFramer::Kind::Message ? frame.bytes : frame.errorText());
                if (reads) {
                    checkRead(frame.bytes);
                }
                ++found;
                piece.remove_prefix(frame.consumed);
            }
        }
        same("every message that was written is found", std::to_string(m_texts.size()), std::to_string(found));
    }

private:
    /** What follows a message in the stream is no part of it. */
    static void checkRead(std::string_view text) {
        const std::string more = std::string(text) + "BYE sip:h SIP/2.0\r\n";
        KxByteArrayInputStream alone(text);
        KxByteArrayInputStream followed{std::string_view(more)};
        const ReadMessage first(alone);
        const ReadMessage second(followed);
        same("what follows a message does not change it", first.text, second.text);
        if (!first.message.isNil() && !hasAnyOf(text.substr(0, text.find('\n')), "?")) { // headers of the Request-URI
            same("a message is read to its end", "BYE sip:h SIP/2.0\r\n", followed.window());
        }
    }

    std::vector<std::string> m_texts;
    std::string m_stream;
};

/** The number of objects that are in use. */
inline std::int64_t liveObjects() {
    std::int64_t count = 0;
    for (const Oskan::MemAccountUsage& account : Oskan::MemAccounts::sList()) {
        count += account.usage.liveObjects;
    }
    return count;
}
