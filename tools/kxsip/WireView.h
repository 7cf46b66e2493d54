#pragma once

#include "tools/kxsip/MessageView.h"

/** The bytes that serialize writes, and nothing else. A refused message writes none: it is told on standard error. */
class WireView final : public MessageView {
public:
    explicit WireView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;
};
