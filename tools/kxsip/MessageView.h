#pragma once

#include "tools/kxsip/ReadMessage.h"

#include <ostream>

/** A format in which messages are shown, one after the other. */
class MessageView {
public:
    virtual ~MessageView() = default;
    MessageView(const MessageView&) = delete;
    MessageView& operator=(const MessageView&) = delete;

    virtual void show(const ReadMessage& read) = 0;

protected:
    /** The stream must outlive the view. */
    explicit MessageView(std::ostream& out) : m_out(out) {}

    std::ostream& m_out;
};
