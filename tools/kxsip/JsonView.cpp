#include "tools/kxsip/JsonView.h"

#include "sipheaders/KxSipBase64Url.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/HeaderFields.h"
#include "tools/kxsip/HeaderValue.h"
#include "tools/kxsip/ObjectText.h"

#include <algorithm>

namespace {

/** [RFC 4648 4] */
std::string base64Of(std::string_view bytes) {
    std::string text = KxSipBase64Url::sEncode(bytes);
    std::replace(text.begin(), text.end(), '-', '+');
    std::replace(text.begin(), text.end(), '_', '/');
    return text.append((4 - text.size() % 4) % 4, '=');
}

void writeError(const KxException& error, JsonWriter& json) {
    json.begin();
    json.key("class").text(classNameOf(error));
    json.key("text").text(error.getExceptionMessage());
    json.end();
}

} // namespace

void JsonView::show(const ReadMessage& read) {
    m_json.drop();
    m_json.begin();
    m_json.key("file").text(read.file);
    m_json.key("index").number(read.index);
    showStartLine(read.message.get());
    m_json.key("error");
    read.isRefused() ? writeError(*read.error, m_json) : m_json.null();
    m_json.key("headers").beginArray();
    if (!read.isRefused()) {
        showHeaders(*read.message);
    }
    m_json.endArray();
    m_json.key("body_bytes").number(read.isRefused() ? 0 : read.message->getStoredBodyLength());
    numberOrNull("unread_bytes", read.unread);
    numberOrNull("line", read.line == 0 ? std::nullopt : std::optional(read.line));
    showOrigin(read.origin);
    showDropped(read.dropped);
    showDialog(read.object().get());
    showBody(read.message.get());
    m_json.end();
    m_json.endLine();
}

/** Null for a refused message. */
void JsonView::showStartLine(const KxSipMessage* message) {
    const auto* const request = message == nullptr ? nullptr : message->as<KxSipRequest>();
    const auto* const response = message == nullptr ? nullptr : message->as<KxSipResponse>();
    textOrNull("kind", request != nullptr ? "request" : response != nullptr ? "response" : nullptr);
    textOrNull("method", request == nullptr ? nullptr : request->getMethod());
    m_json.key("uri");
    request == nullptr || request->getURI().isNil() ? m_json.null() : m_json.serialized(*request->getURI());
    m_json.key("code");
    response == nullptr ? m_json.null() : m_json.number(response->getStatusCode());
    m_json.key("reason");
    response == nullptr ? m_json.null() : m_json.text(response->getReasonPhrase());
    m_json.key("version");
    if (message == nullptr) {
        m_json.null();
        m_json.key("status").null();
    } else {
        m_json.text(std::to_string(message->getVersionHigh()) + "." + std::to_string(message->getVersionLow()));
        m_json.key("status").number(static_cast<unsigned>(message->getStatus()));
    }
    m_json.key("valid").truth(message != nullptr && message->isValid());
    showKey(message);
}

void JsonView::showKey(const KxSipMessage* message) {
    KxString key;
    try {
        key = message == nullptr ? KxString() : message->createKey();
    } catch (const KxHandle<KxException>&) {
        key = KxString();
    }
    textOrNull("key", key);
}

void JsonView::showHeaders(const KxSipMessage& message) {
    for (const HeaderID id : message.getHeaderOrder()) {
        for (const KxSipHeader* header = message.getHeaderByID(id).get(); header != nullptr;
             header = header->getNext().get()) {
            showHeader(*header);
        }
    }
}

void JsonView::showHeader(const KxSipHeader& header) {
    const HeaderFields& fields = HeaderFields::sOf(header);
    m_json.begin();
    m_json.key("id").number(header.getHeaderID());
    m_json.key("name").text(header.getToken());
    m_json.key("class").text(fields.className);
    m_json.key("value");
    const HeaderText value = HeaderText::sOf(header);
    if (value.error.isNil()) {
        m_json.text(value.text);
    } else {
        m_json.null();
        m_json.key("error");
        writeError(*value.error, m_json);
    }
    if (fields.hasAny()) {
        m_json.key("fields").begin();
        fields.write(header, m_json);
        m_json.end();
    }
    m_json.end();
}

void JsonView::showOrigin(const std::optional<Origin>& origin) {
    textOrNull("time", origin ? utcText(origin->time).c_str() : nullptr);
    textOrNull("transport", origin ? origin->transport : nullptr);
    showEnd("source", origin ? &origin->source : nullptr);
    showEnd("destination", origin ? &origin->destination : nullptr);
}

void JsonView::showEnd(const char* key, const Endpoint* endpoint) {
    m_json.key(key);
    if (endpoint == nullptr) {
        m_json.null();
        return;
    }
    m_json.begin();
    m_json.key("address").text(endpoint->address);
    m_json.key("port").number(endpoint->port);
    m_json.end();
}

void JsonView::showDropped(const std::vector<DroppedLine>& lines) {
    m_json.key("dropped").beginArray();
    for (const DroppedLine& line : lines) {
        m_json.begin();
        m_json.key("line").number(line.line);
        m_json.key("text").text(line.text);
        m_json.key("why").text(line.why);
        m_json.end();
    }
    m_json.endArray();
}

/** Of a refused message what could be read of it; null if that is nothing. */
void JsonView::showDialog(const KxSipMessage* message) {
    const auto* const callId = message == nullptr ? nullptr : message->first<KxSipCallIdHeader>();
    const auto* const from = message == nullptr ? nullptr : message->first<KxSipFromHeader>();
    const auto* const to = message == nullptr ? nullptr : message->first<KxSipToHeader>();
    const auto* const cseq = message == nullptr ? nullptr : message->first<KxSipCSeqHeader>();
    textOrNull("call_id", callId == nullptr ? KxString() : callId->getCallId());
    textOrNull("from_tag", from == nullptr ? KxString() : from->getTag());
    textOrNull("to_tag", to == nullptr ? KxString() : to->getTag());
    m_json.key("cseq");
    if (cseq == nullptr) {
        m_json.null();
        return;
    }
    m_json.begin();
    m_json.key("number").number(cseq->getSeqNumber());
    m_json.key("method").text(cseq->getMethod());
    m_json.end();
}

void JsonView::showBody(const KxSipMessage* message) {
    const bool hasBody = message != nullptr && message->hasBody();
    const std::string_view body =
        hasBody ? std::string_view(message->getBody(), message->getStoredBodyLength()) : std::string_view();
    const bool isText = body.find('\0') == std::string_view::npos && JsonWriter::sIsUtf8(body);
    m_json.key("body");
    hasBody&& isText ? m_json.text(body) : m_json.null();
    m_json.key("body_base64");
    hasBody && !isText ? m_json.text(base64Of(body)) : m_json.null();
}

void JsonView::textOrNull(const char* key, const char* text) {
    m_json.key(key);
    text == nullptr ? m_json.null() : m_json.text(text);
}

/** Nil is null. */
void JsonView::textOrNull(const char* key, const KxString& text) {
    m_json.key(key);
    text.isNil() ? m_json.null() : m_json.text(text);
}

void JsonView::numberOrNull(const char* key, const std::optional<std::size_t>& number) {
    m_json.key(key);
    number ? m_json.number(*number) : m_json.null();
}
