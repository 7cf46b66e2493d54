#pragma once

#include "tools/kxsip/Colour.h"
#include "tools/kxsip/HeaderValue.h"
#include "tools/kxsip/MessageView.h"

/** Shows a message as text: start line, verdict of the library, and headers with their classes. Control characters are
    written as \xNN, so that a message can't control the terminal. */
class TextView final : public MessageView {
public:
    TextView(std::ostream& out, Colour colour) : MessageView(out), m_colour(colour) {}

    void show(const ReadMessage& read) override;

private:
    void showOrigin(const Origin& origin);
    void showStartLine(const KxSipMessage& message);
    void showVerdict(const ReadMessage& read);
    std::string shown(const HeaderText& value) const;
    void showHeaders(const std::vector<HeaderValue>& headers);

    Colour m_colour;
    bool m_first = true;
};
