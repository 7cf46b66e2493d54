// Operations on a message. The first byte gives the number of steps. Each step has two bytes, the operation and its
// argument. The rest is a message to which the steps are applied. Laws: an operation that only reads changes nothing,
// and returns the same for a copy. An edit changes only what it is to change. A derived message leaves its parent
// unchanged, can be read again, and has the key of its transaction. A copy is written as its original, to every stream.

#include "fuzz/MessageReading.h"
#include "fuzz/MessageRound.h"
#include "fuzz/PlainMessage.h"
#include "sipobject/headers/KxSipNumberHeader.h"
#include "sipobject/messages/KxSipAckMessage.h"
#include "sipobject/messages/KxSipByeMessage.h"
#include "sipobject/messages/KxSipCancelMessage.h"
#include "sipobject/messages/KxSipPrackMessage.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "sipobject/messages/KxSipUnknownRequest.h"

#include <array>
#include <sstream>

namespace {

using Message = KxHandle<KxSipMessage>;

/** A header class of the host's own, with an identifier from start-up. */
class Level final : public KxSipNumberHeader<Level> {
public:
    static const KxConstString sToken;
    static constexpr char kClassName[] = "Level";
    inline static const HeaderID kHeaderID = KxSipHeader::sNewHeaderID();
};
constinit const KxConstString Level::sToken{"X-Level"};
const Level::Registration s_level;

constexpr std::array<const char*, 25> kLines = {"Via: SIP/2.0/UDP h;branch=z9hG4bKn",
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
constexpr std::array<const char*, 7> kNames = {"Via", "X-A", "x-b", "Contact", "content-length", "", "x-level"};
constexpr std::array<const char*, 5> kURIs = {"sip:new@h:5070;lr?a=b", "<tel:+1;a=b>", "urn:<x>", "sip:h;transport=tls",
                                              ""};

template <class M>
KxHandle<M> as(const Message& message) {
    return KxHandle<M>(dynamic_cast<M*>(message.get()));
}

/** The key, or the reason why there is none. */
std::string keyOf(const KxSipMessage& message) {
    return outcomeOf([&] { return std::string(message.createKey().view()); });
}

class Drive {
public:
    explicit Drive(const Message& message) : m_message(message), m_text(written(*message)) {}

    void step(unsigned what, unsigned with) {
        switch (what % 8) {
        case 0:
            look(with);
            break;
        case 1:
            add(with, (what & 8) != 0, (what & 16) != 0);
            break;
        case 2:
            remove(with);
            break;
        case 3:
            editHeader(with);
            break;
        case 4:
            setBody(with, (what & 8) != 0);
            break;
        case 5:
            setURI(with);
            break;
        case 6:
            derive(what / 8, with);
            break;
        default:
            build(with);
        }
        m_text = written(*m_message);
    }
    void finish() const { checkEdited(*m_message, m_text); }

private:
    void look(unsigned with) {
        const Message copy(static_cast<KxSipMessage*>(m_message->clone()));
        const std::string all = MessageReading(*m_message).text();
        same("a copy reads as its original does", all, MessageReading(*copy).text());
        if (m_message->getStatus() != KX_STATUS_UNUSABLE) {
            same("a copy has the key of its original", keyOf(*m_message), keyOf(*copy));
            if (const KxHandle<KxSipToHeader> to = copy->getToHeader(); !to.isNil()) {
                to->setTag("another");
                same("the To tag is no part of the key", keyOf(*m_message), keyOf(*copy));
            }
        }
        PlainMessage plain(*m_message);
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
                const bool isUnknown = id == KxHeaderIDs::kUnknown;
                const bool isNamed =
                    KxAscii::equalsNoCase(isUnknown ? value->getToken() : value->getExpandedToken(), name);
                plain += isNamed ? std::string(value->getValueText().view()) + '|' : "";
            }
        }
        std::string found;
        for (const KxSipHeader& value : m_message->valuesNamed(name)) {
            found.append(value.getValueText().view()) += '|';
        }
        same("all headers of a name are found", plain, found);
        const Message copy(static_cast<KxSipMessage*>(m_message->clone()));
        copy->removeAllNamed(name);
        if (copy->hasNamed(name)) {
            fail("all headers of a name are removed", m_text, written(*copy));
        }
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

    void add(unsigned with, bool first, bool single) {
        KxByteArrayInputStream in{std::string_view(kLines[with % kLines.size()])};
        KxHandle<KxSipHeader> header;
        const std::string why = outcomeOf([&] {
            header = KxSipHeader::sConstructFrom(in);
            return std::string();
        });
        if (!why.empty() && isRFC()) { // it refuses some of the lines
            return;
        }
        PlainMessage plain(*m_message);
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
        PlainMessage plain(*m_message);
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
        PlainMessage before(*m_message);
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
        PlainMessage before(*m_message);
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
        PlainMessage plain(*m_message);
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
        const std::string body = with % 2 == 0 ? "" : "body\r\n";
        const auto length = static_cast<std::uint32_t>(body.size());
        const auto response = as<KxSipResponse>(m_message);
        const auto request = as<KxSipRequest>(m_message);
        const auto invite = as<KxSipInviteMessage>(m_message);
        how %= request.isNil() ? 5 : invite.isNil() ? 6 : 9;
        const KxSipResponseParts parts{
            .statusCode = static_cast<int>(100 + with * 2), .contact = "<sip:c@h>", .contentType = "a/b", .body = body};
        Message derived;
        const std::string why = outcomeOf([&] {
            switch (how) {
            case 0:
                derived = KxMake<KxSipAckMessage>(response, body.data(), "a/b", length);
                break;
            case 1:
                derived = KxMake<KxSipPrackMessage>(response, body.data(), "a/b", length);
                break;
            case 2:
                derived = KxMake<KxSipCancelMessage>(request);
                break;
            case 3:
                if (!invite.isNil()) {
                    derived = KxMake<KxSipByeMessage>(invite);
                } else {
                    derived = KxMake<KxSipByeMessage>(response);
                }
                break;
            case 4:
                derived = KxMake<KxSipResponse>(parts.statusCode, request, body.data(), "a/b", length);
                break;
            case 5:
                derived = KxSipResponse::sBuild(*request, parts);
                break;
            case 6:
                derived = KxSipCancelMessage::sFor(*invite);
                break;
            case 7:
                derived = KxSipAckMessage::sFor(*invite, *KxSipResponse::sBuild(*invite, parts));
                break;
            default:
                KxSipDialog dialog = KxSipDialog::sOfCallee(*invite, *KxSipResponse::sBuild(*invite, parts));
                derived = KxSipRequest::sWithin(dialog, "INFO", {.contentType = "a/b", .body = body});
            }
            return std::string();
        });
        same("a message from which others are derived stays as it is", m_text, written(*m_message));
        if (derived.isNil()) {
            return;
        }
        if (!derived->isValid()) {
            fail("a derived message is valid", m_text, written(*derived));
        }
        const bool isSameTransaction = how == 2 || (how >= 4 && how <= 6);
        if (isSameTransaction && m_message->getStatus() != KX_STATUS_UNUSABLE) {
            same("a response, and a CANCEL, has the key of its request", keyOf(*m_message), keyOf(*derived));
        }
        if (derived->getViaHeader().isNil()) {
            as<KxSipRequest>(derived)->insertViaHeader("h", with, "UDP");
        }
        const std::string text = written(*derived);
        checkWriting(*derived, text, 1);
        checkSecondRound(*derived, text, derived->isValid());
        if (with >= 0x80) {
            m_message = derived;
            return;
        }
        spoil(*derived);
        same("what is done to a derived message is not done to its parent", m_text, written(*m_message));
    }
    static void spoil(KxSipMessage& message) {
        const auto spoilList = [](const auto& header) {
            if (!header.isNil()) {
                header->setParameter("spoilt", KxString("1"));
            }
        };
        spoilList(message.getViaHeader());
        spoilList(message.getFromHeader());
        spoilList(message.getToHeader());
        message.getCSeqHeader()->setSeqNumber(message.getCSeqHeader()->getSeqNumber() ^ 1);
        const auto* const request = dynamic_cast<const KxSipRequest*>(&message);
        if (request != nullptr && request->getURI()->isSipURL()) {
            request->getURL()->setMAddrParam(KxString("spoilt"));
        }
    }

    /** Builds a request from the same parts, with one of the constructors. */
    void build(unsigned with) {
        const auto copy = [&]<class H>(const KxHandle<H>& header) {
            return KxHandle<H>(header.isNil() ? nullptr : static_cast<H*>(header->clone()));
        };
        const auto from = copy(m_message->getFromHeader());
        const auto to = copy(m_message->getToHeader());
        const auto contact = copy(m_message->getContactHeader());
        const KxHandle<KxSipNameAddress> target = to.isNil() ? KxHandle<KxSipNameAddress>() : to->getNameAddress();
        const auto text = [](const auto& header) { return header.isNil() ? "" : written(*header->getNameAddress()); };
        const auto length = static_cast<std::uint32_t>(with / 64);
        Message built;
        const std::string why = outcomeOf([&] {
            switch (with % 4) {
            case 0:
                built =
                    KxMake<KxSipUnknownRequest>("FOO", text(from).c_str(), text(to).c_str(),
                                                contact.isNil() || contact->isWildCard() ? "*" : text(contact).c_str(),
                                                "a@h", with, "a/b", "body", length);
                break;
            case 1:
                built = KxMake<KxSipUnknownRequest>("FOO", from, to, contact, nullptr, 0U, "a/b", "body", length);
                break;
            case 2:
                built = KxMake<KxSipByeMessage>(target, from, to, contact, "a@h", with, "a/b", "body", length);
                break;
            default:
                built = KxMake<KxSipInviteMessage>(target.isNil() ? KxHandle<KxURI>() : target->getURI(), from, to,
                                                   contact, "a@h", with, "a/b", "body", length);
            }
            return std::string();
        });
        if (!built.isNil()) {
            as<KxSipRequest>(built)->insertViaHeader("h", with, "TCP");
            checkEdited(*built, written(*built));
            if (!built->getCSeqHeader().isNil()) {
                spoil(*built);
            }
        }
        same("a message of whose parts another is built stays as it is", m_text, written(*m_message));
    }

    /** Checks that an edited message is read again, unless mandatory headers are missing now. Three kinds of messages
        are not checked: one without a Content-Length gets a new one, one whose Content-Length exceeds the body is
        invalid, and the RFC grammar reads several Content-Lengths as one, or not at all. */
    static void checkEdited(const KxSipMessage& message, std::string_view text) {
        checkWriting(message, text, 1);
        const KxHandle<KxSipHeader> length = message.getHeaderByID(KxHeaderIDs::kContentLength);
        if (!length.isNil() && (!isRFC() || length->getNext().isNil()) &&
            message.getBodyLength() <= message.getStoredBodyLength()) {
            checkSecondRound(message, text, false);
        }
    }

    Message m_message;
    std::string m_text; ///< The message as written before the step.
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Block block(data, size);
    std::string_view text = block.view();
    const std::size_t steps = text.empty() ? 0 : static_cast<unsigned char>(text[0]) % 16;
    if (text.size() < 1 + 2 * steps) {
        return 0;
    }
    const std::string_view program = text.substr(1, 2 * steps);
    text.remove_prefix(1 + 2 * steps);
    KxByteArrayInputStream in(text);
    const ReadMessage read(in);
    if (read.message.isNil()) {
        return 0;
    }
    Drive drive(read.message);
    for (std::size_t i = 0; i < steps; ++i) {
        drive.step(static_cast<unsigned char>(program[2 * i]), static_cast<unsigned char>(program[2 * i + 1]));
    }
    drive.finish();
    return 0;
}
