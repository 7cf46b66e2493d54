#pragma once

#include "tools/kxsip/MessageView.h"

/** Shows each message in the library's log form, as a received message. Reports a refused message on standard error. */
class LogView final : public MessageView {
public:
    explicit LogView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;
};
