#include "tools/kxsip/LogView.h"

#include "tools/kxsip/Terminal.h"

#include <sstream>

void LogView::show(const ReadMessage& read) {
    if (read.isRefused()) {
        read.complain(*read.error);
        return;
    }
    std::ostringstream text;
    read.message->formatMessage(text, true, nullptr, nullptr, Oskan::LogLevel::Info);
    Terminal::write(m_out, text.view());
}
