#pragma once

#include "tools/kxsip/HeaderValue.h"
#include "tools/kxsip/MessageView.h"

/** A message for the eye: what it is, what the library says of it, and its headers with their classes. Control
    characters are written as \xNN, so that a message can't steer the terminal. */
class TextView final : public MessageView {
public:
    explicit TextView(std::ostream& out) : MessageView(out) {}

    void show(const ReadMessage& read) override;

private:
    void showStartLine(const KxSipMessage& message);
    void showVerdict(const KxSipMessage& message);
    void showHeaders(const std::vector<HeaderValue>& headers);

    bool m_first = true;
};
