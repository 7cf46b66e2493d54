#include "tools/kxsip/JsonView.h"

#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/HeaderValue.h"
#include "tools/kxsip/ObjectText.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

/** Returns an object with all keys. Every object has all of them, in this order. */
Json blank(const ReadMessage& read) {
    Json json;
    json["file"] = read.file;
    json["index"] = read.index;
    for (const char* key : {"kind", "method", "uri", "code", "reason", "version", "status"}) {
        json[key] = nullptr;
    }
    json["valid"] = false;
    json["key"] = nullptr;
    json["error"] = nullptr;
    json["headers"] = Json::array();
    json["body_bytes"] = 0;
    json["unread_bytes"] = read.unread ? Json(*read.unread) : Json();
    json["line"] = read.line == 0 ? Json() : Json(read.line);
    for (const char* key : {"time", "transport", "source", "destination"}) {
        json[key] = nullptr;
    }
    json["dropped"] = Json::array();
    return json;
}

Json end(const Endpoint& endpoint) {
    return {{"address", endpoint.address}, {"port", endpoint.port}};
}

void addOrigin(Json& json, const Origin& origin) {
    json["time"] = utcText(origin.time);
    json["transport"] = origin.transport;
    json["source"] = end(origin.source);
    json["destination"] = end(origin.destination);
}

void addRequestLine(Json& json, const KxSipRequest& request) {
    json["kind"] = "request";
    json["method"] = request.getMethod();
    if (!request.getURI().isNil()) {
        json["uri"] = serialized(*request.getURI());
    }
}

void addStatusLine(Json& json, const KxSipResponse& response) {
    json["kind"] = "response";
    json["code"] = response.getStatusCode();
    json["reason"] = response.getReasonPhrase().view();
}

Json keyOf(const KxSipMessage& message) {
    try {
        return message.createKey().view();
    } catch (const KxHandle<KxException>&) {
        return nullptr;
    }
}

void addMessage(Json& json, const KxSipMessage& message) {
    if (const auto* const request = message.as<KxSipRequest>()) {
        addRequestLine(json, *request);
    } else if (const auto* const response = message.as<KxSipResponse>()) {
        addStatusLine(json, *response);
    }
    json["version"] = std::to_string(message.getVersionHigh()) + "." + std::to_string(message.getVersionLow());
    json["status"] = static_cast<unsigned>(message.getStatus());
    json["valid"] = message.isValid();
    json["key"] = keyOf(message);
    for (const HeaderValue& header : HeaderValue::sAllOf(message)) {
        json["headers"].push_back(
            {{"id", header.id}, {"name", header.name}, {"class", header.className}, {"value", header.value}});
    }
    json["body_bytes"] = message.getStoredBodyLength();
}

} // namespace

void JsonView::show(const ReadMessage& read) {
    Json json = blank(read);
    if (read.origin) {
        addOrigin(json, *read.origin);
    }
    if (read.isRefused()) {
        json["error"] = {{"class", classNameOf(*read.error)}, {"text", read.error->getExceptionMessage().view()}};
    } else {
        addMessage(json, *read.message);
    }
    for (const DroppedLine& line : read.dropped) {
        json["dropped"].push_back({{"line", line.line}, {"text", line.text}, {"why", line.why}});
    }
    m_out << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}
