#pragma once

#include "tools/kxsip/MessageView.h"

/** What the library's log form says of each message, taken as received. A refused one is told on standard error. */
class LogView final : public MessageView {
public:
    explicit LogView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;
};
