#pragma once

#include "fuzz/LivesDerivation.h"
#include "fuzz/MessageReading.h"
#include "fuzz/PlainMessage.h"
#include "sipobject/headers/KxSipNumberHeader.h"

#include <array>
#include <set>
#include <sstream>

/** A header class of the host's own, with an identifier from start-up. */
class Level final : public KxSipNumberHeader<Level> {
public:
    static const KxConstString sToken;
    static constexpr char kClassName[] = "Level";
    inline static const HeaderID kHeaderID = KxSipHeader::sNewHeaderID();
};
inline constinit const KxConstString Level::sToken{"X-Level"};
inline const Level::Registration s_level;

inline constexpr std::array<const char*, 25> kLines = {"Via: SIP/2.0/UDP h;branch=z9hG4bKn",
                                                       "v: SIP/2.0/TCP h:1, SIP/2.0/TLS i",
                                                       "Route: <sip:r;lr>, <sip:s>",
                                                       "Record-Route: <sip:p;lr>,<sip:q>",
                                                       "X-A: 1",
                                                       "x-a: 2",
                                                       "X-B: 3",
                                                       "Contact: *",
                                                       "m: <sip:c@h;transport=tcp>;q=1",
                                                       "Contact: <tel:+1>, <urn:a>",
                                                       "To: <urn:x>",
                                                       "t: <sip:b@h>;tag=2",
                                                       "From: tel:1;tag=3",
                                                       "CSeq: 2 INVITE",
                                                       "CSeq: 4294967295 invite",
                                                       "i: new@h",
                                                       "Content-Length: 5",
                                                       "l: 0",
                                                       "Accept: a/b, c/d;q=0",
                                                       "Content-Type: a/b;c=d",
                                                       "Max-Forwards: 0",
                                                       "Supported: 100rel,,timer",
                                                       "Session-Expires: 90;refresher=uas",
                                                       "Replaces: a;to-tag=1;from-tag=2",
                                                       "X-Level: 1, 2"};
inline constexpr std::array<const char*, 7> kNames = {"Via", "X-A", "x-b", "Contact", "content-length", "", "x-level"};
inline constexpr std::array<const char*, 5> kURIs = {"sip:new@h:5070;lr?a=b", "<tel:+1;a=b>", "urn:<x>",
                                                     "sip:h;transport=tls", ""};

/** A message, and what is done to it alone. Laws: an operation that only reads changes nothing, and returns the same
    for a copy. An edit changes only what it is to change. A derived message leaves its parent unchanged, is of its
    dialog, can be read again, and has the key of its transaction. */
class Life {
public:
    explicit Life(const LivesMessage& message) : m_message(message), m_text(written(*message)) {}

    const LivesMessage& message() const { return m_message; }
    /** The message as it was written after the last step. */
    const std::string& text() const { return m_text; }
    /** Takes another message. */
    void become(const LivesMessage& message) {
        m_message = message;
        note();
    }
    /** To be called after what may have changed the message. */
    void note() {
        m_text = written(*m_message);
        m_isChecked = false;
    }
    void checkUnchanged() const { same("what was not to change is as it was", m_text, written(*m_message)); }
    PlainMessage plain() const { return {*m_message, m_text}; }

    /** One of the operations 0 to 7. */
    void step(unsigned what, unsigned flags, unsigned with) {
        switch (what) {
        case 0:
            look(with);
            break;
        case 1:
            add(with, flags);
            break;
        case 2:
            remove(with);
            break;
        case 3:
            editHeader(with);
            break;
        case 4:
            setBody(with, (flags & 1) != 0);
            break;
        case 5:
            setURI(with);
            break;
        case 6:
            derive(flags, with);
            break;
        default:
            build(with);
        }
        if (what >= 1 && what <= 6) {
            note();
        }
    }

    /** Checks that an edited message is read again, unless mandatory headers are missing now. Three kinds of messages
        are not checked: one without a Content-Length gets a new one, one whose Content-Length exceeds the body is
        invalid, and the RFC grammar reads several Content-Lengths as one, or not at all. */
    void checkEdited() const {
        if (!m_isChecked) {
            checkEdited(*m_message, m_text);
        }
    }

private:
    static void checkEdited(const KxSipMessage& message, std::string_view text) {
        same("a copy is written as its original", text, written(*copyOf(message)));
        const KxHandle<KxSipHeader> length = message.getHeaderByID(KxHeaderIDs::kContentLength);
        if (!length.isNil() && (!isRFC() || length->getNext().isNil()) &&
            message.getBodyLength() <= message.getStoredBodyLength()) {
            checkSecondRound(message, text, false);
        }
    }

    void look(unsigned with) {
        const LivesMessage copy = copyOf(*m_message);
        const std::string all = MessageReading(*m_message).text();
        same("a copy reads as its original does", all, MessageReading(*copy).text());
        if (m_message->getStatus() != KX_STATUS_UNUSABLE) {
            same("a copy has the key of its original", keyOf(*m_message), keyOf(*copy));
            if (const KxHandle<KxSipToHeader> to = copy->getToHeader(); !to.isNil()) {
                to->setTag("another");
                same("the To tag is no part of the key", keyOf(*m_message), keyOf(*copy));
            }
        }
        PlainMessage plain(*m_message, m_text);
        const KxHandle<KxSipHeader> found = m_message->getHeader(kNames[with % kNames.size()]);
        same("a header is found by the name it is written under", plain.line(kNames[with % kNames.size()]),
             found.isNil() ? "" : written(*KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(found->clone()))));
        checkNamed(kNames[with % kNames.size()]);
        checkLog(with);
        same("who only reads changes nothing", m_text, written(*m_message));
        same("a second reading gives the same", all, MessageReading(*m_message).text());
    }
    /** By name, all values are found and removed. */
    void checkNamed(std::string_view name) const {
        std::string plain;
        for (HeaderID id = 0; KxSipHeader::sIsHeaderID(id); ++id) {
            for (const KxSipHeader* value = m_message->getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                // A name that was folded, or has control characters around it, may be written as that of a class.
                const bool isUnknown = id == KxHeaderIDs::kUnknown;
                const bool isNamed = isUnknown ? !isRegistered(name) && KxAscii::equalsNoCase(value->getToken(), name)
                                               : KxAscii::equalsNoCase(value->getExpandedToken(), name);
                plain += isNamed ? std::string(value->getValueText().view()) + '|' : "";
            }
        }
        std::string found;
        for (const KxSipHeader& value : m_message->valuesNamed(name)) {
            found.append(value.getValueText().view()) += '|';
        }
        same("all headers of a name are found", plain, found);
        const LivesMessage copy = copyOf(*m_message);
        copy->removeAllNamed(name);
        if (copy->hasNamed(name)) {
            fail("all headers of a name are removed", m_text, written(*copy));
        }
    }
    static bool isRegistered(std::string_view name) {
        static const auto names = KxSipHeader::sNames();
        return std::any_of(names.begin(), names.end(),
                           [name](std::string_view each) { return KxAscii::equalsNoCase(each, name); });
    }
    void checkLog(unsigned with) const {
        std::string plain;
        for (std::size_t i = 0; i < m_text.size(); ++i) {
            plain += m_text.compare(i, 2, "\r\n") == 0 ? "" : std::string(1, m_text[i]);
        }
        std::ostringstream log;
        log << *m_message;
        same("the log shows the message with plain line ends", plain, log.str());
        std::ostringstream formatted;
        m_message->formatMessage(formatted, (with & 1) != 0, (with & 2) != 0 ? &with : nullptr, nullptr,
                                 Oskan::LogLevel::Info);
        if (!formatted.str().ends_with(":\n" + plain + '\n')) {
            fail("a log entry ends in the message", plain, formatted.str());
        }
    }

    void add(unsigned with, unsigned flags) {
        const bool first = (flags & 1) != 0;
        const bool single = (flags & 2) != 0;
        KxByteArrayInputStream in{std::string_view(kLines[with % kLines.size()])};
        KxHandle<KxSipHeader> header;
        const std::string why = outcomeOf([&] {
            header = KxSipHeader::sConstructFrom(in);
            return std::string();
        });
        if (!why.empty() && isRFC()) { // it refuses some of the lines
            return;
        }
        PlainMessage plain(*m_message, m_text);
        plain.add(*header, first, single);
        single ? m_message->addSingleHeader(header, first) : m_message->addHeader(header, first);
        same("a header is added where it belongs", plain.withoutBody().written(),
             PlainMessage(*m_message).withoutBody().written()); // a Content-Length determines how much body is written
        if (!single) { // part of the message now: the first of its kind changes nothing, any other is copied
            const bool again = with % 2 != 0;
            if (!(m_message->getHeaderByID(header->getHeaderID()) == header)) {
                plain.add(*header, again, true);
            }
            m_message->addHeader(header, again);
            same("a header is part of a message once", plain.written(),
                 PlainMessage(*m_message).withoutBody().written());
        }
    }
    void remove(unsigned with) {
        PlainMessage plain(*m_message, m_text);
        const std::vector<HeaderID> order = m_message->getHeaderOrder();
        std::string name = kNames[with % kNames.size()];
        if (with >= 0x80 && !order.empty()) {
            name = m_message->getHeaderByID(order[with % order.size()])->getToken().view();
        }
        const bool removes = plain.remove(name);
        if (m_message->removeHeader(name) != removes) {
            fail("what there is is removed", name, m_text);
        }
        same("the first header of a name is removed", plain.withoutBody().written(),
             PlainMessage(*m_message).withoutBody().written());
    }

    /** Edits a header. Headers of its kind may change, others must not. */
    void editHeader(unsigned with) {
        const std::string number = std::to_string(with);
        const KxString value(number);
        PlainMessage before(*m_message, m_text);
        HeaderID id = KxHeaderIDs::kNone;
        if (const auto via = m_message->getViaHeader(); !via.isNil() && with % 4 == 0) {
            id = via->getHeaderID();
            via->setBranch(value);
            via->setReceived(KxString("192.0.2.1"));
            via->setHidden();
            via->removeTTL();
            same("what is set is there", value, via->getBranch());
        } else if (const auto from = m_message->getFromHeader(); !from.isNil() && with % 4 == 1) {
            id = from->getHeaderID();
            from->setTag(number.c_str());
            same("what is set is there", value, from->getTag());
        } else if (const auto contact = m_message->getContactHeader(); !contact.isNil() && with % 4 == 2) {
            id = contact->getHeaderID();
            contact->setExpires(value);
            contact->removeQValue();
            same("what is set is there", value, contact->getExpires());
            if (const KxHandle<KxSipURL> url = contact->getURL(); !url.isNil()) {
                url->setTransportParam(KxSocketImpl::TLS);
                url->removeParameter("ob");
                url->clearHeaders();
                same("what is set is there", "tls", url->getParameter("transport"));
            }
        } else if (const auto cseq = m_message->getCSeqHeader(); !cseq.isNil()) {
            id = cseq->getHeaderID();
            cseq->setSeqNumber(with);
        }
        same("an edit is one of its header", before.without(id).written(),
             PlainMessage(*m_message).without(id).written());
    }

    void setBody(unsigned with, bool isMissing) {
        const std::string body(with, 'b');
        PlainMessage before(*m_message, m_text);
        const std::string why = outcomeOf([&] {
            m_message->setBody(isMissing ? nullptr : body.data(), with % 2 == 0 ? "a/b" : "text/plain",
                               static_cast<std::uint32_t>(with));
            return std::string();
        });
        if (why.empty() == (isMissing && with != 0) || m_message->getBodyLength() != with) {
            fail("Content-Length is set, and so is a body that there is", why, written(*m_message));
        }
        if (why.empty() && with != 0) {
            same("a body is kept as given", body, {m_message->getBody(), m_message->getStoredBodyLength()});
            same("a body has the type it was given", with % 2 == 0 ? "a/b" : "text/plain", m_message->getBodyType());
        }
        PlainMessage after(*m_message);
        for (PlainMessage* const each : {&before, &after}) {
            each->without(KxHeaderIDs::kContentLength).without(KxHeaderIDs::kContentType).withoutBody();
        }
        same("a body changes no other header", before.written(), after.written());
    }

    void setURI(unsigned with) {
        const KxHandle<KxSipRequest> request = as<KxSipRequest>(m_message);
        if (request.isNil()) {
            as<KxSipResponse>(m_message)->setReasonPhrase(kURIs[with % kURIs.size()]);
            same("what is set is there", kURIs[with % kURIs.size()], as<KxSipResponse>(m_message)->getReasonPhrase());
            return;
        }
        std::string text = kURIs[with % kURIs.size()];
        std::erase_if(text, [](char c) { return isRFC() && (c == '<' || c == '>'); }); // which it refuses in a URN
        KxByteArrayInputStream in{std::string_view(text)};
        const KxHandle<KxURI> uri = in.peek() < 0 ? KxHandle<KxURI>() : KxURI::sConstructFrom(in, true);
        PlainMessage plain(*m_message, m_text);
        request->setURI(uri);
        const bool hasLine = !uri.isNil() && *request->getMethod() != '\0';
        const std::string start = std::string(request->getMethod()) + ' ';
        plain.withStart(hasLine ? start + written(*request->getURI()) + " SIP/2.0\r\n" : "");
        same("a Request-URI is in the start line only", plain.written(), written(*m_message));
        if (!uri.isNil() && uri.get() == request->getURI().get()) {
            fail("a request has a URI of its own", written(*uri), m_text);
        }
    }

    void derive(unsigned how, unsigned with) {
        const LivesMessage derived = LivesDerivation(m_message, how, with).derived;
        if (derived.isNil()) {
            return;
        }
        if (with >= 0x80) {
            m_message = derived;
            return;
        }
        spoil(*derived);
        same("what is done to a derived message is not done to its parent", m_text, written(*m_message));
    }

    void build(unsigned with) {
        const LivesMessage built = buildFromPartsOf(*m_message, with);
        if (!built.isNil()) {
            checkEdited(*built, written(*built));
            if (!built->getCSeqHeader().isNil()) {
                spoil(*built);
            }
        }
        same("a message of whose parts another is built stays as it is", m_text, written(*m_message));
    }

    LivesMessage m_message;
    std::string m_text;      ///< What it wrote after the last change.
    bool m_isChecked = true; ///< Nothing has changed since it was read or copied.
};
