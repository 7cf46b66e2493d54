#pragma once

#include "tools/kxsip/MessageView.h"

/** Shows each message as one JSON object on a line. Bytes that are not UTF-8 become U+FFFD. */
class JsonView final : public MessageView {
public:
    explicit JsonView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;
};
