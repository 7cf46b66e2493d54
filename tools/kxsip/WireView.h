#pragma once

#include "tools/kxsip/MessageView.h"

/** Shows the bytes that serialize writes, and nothing else. Reports a refused message on standard error. */
class WireView final : public MessageView {
public:
    explicit WireView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;
};
