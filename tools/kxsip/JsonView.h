#pragma once

#include "tools/kxsip/JsonWriter.h"
#include "tools/kxsip/MessageView.h"

/** Shows each message as one JSON object on a line. Bytes that are not UTF-8 become U+FFFD. A header that can't be
    written is an object with its error. */
class JsonView final : public MessageView {
public:
    explicit JsonView(std::ostream& out) : MessageView(out), m_json(out) {}

    void show(const ReadMessage& read) override;

private:
    void showStartLine(const KxSipMessage* message);
    void showKey(const KxSipMessage* message);
    void showHeaders(const KxSipMessage& message);
    void showHeader(const KxSipHeader& header);
    void showOrigin(const std::optional<Origin>& origin);
    void showEnd(const char* key, const Endpoint* endpoint);
    void showDropped(const std::vector<DroppedLine>& lines);
    void showDialog(const KxSipMessage* message);
    void showBody(const KxSipMessage* message);
    void textOrNull(const char* key, const char* text);
    void textOrNull(const char* key, const KxString& text);
    void numberOrNull(const char* key, const std::optional<std::size_t>& number);

    JsonWriter m_json;
};
