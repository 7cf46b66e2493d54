#include "tools/kxsip/LogView.h"

void LogView::show(const ReadMessage& read) {
    if (read.isRefused()) {
        read.complain(*read.error);
    } else {
        read.message->formatMessage(m_out, true, nullptr, nullptr, Oskan::LogLevel::Info);
    }
}
