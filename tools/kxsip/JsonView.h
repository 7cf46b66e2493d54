#pragma once

#include "tools/kxsip/MessageView.h"

/** One JSON object a line. Bytes that are not UTF-8 become U+FFFD. */
class JsonView final : public MessageView {
public:
    explicit JsonView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;
};
