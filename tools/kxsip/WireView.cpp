#include "tools/kxsip/WireView.h"

#include "tools/kxsip/HeaderValue.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Terminal.h"

namespace {

std::string startLineOf(const KxSipMessage& message) {
    const KxHandle<KxSipMessage> bare(static_cast<KxSipMessage*>(message.clone()));
    for (const HeaderID id : bare->getHeaderOrder()) {
        bare->removeAllNamed(bare->getHeaderByID(id)->getToken());
    }
    const std::string text = serialized(*bare);
    return text.substr(0, text.find("\r\n") + 2);
}

/** Returns the message without the headers that can't be written. */
std::string writableOf(const KxSipMessage& message) {
    std::string text = startLineOf(message);
    for (const HeaderValue& header : HeaderValue::sAllOf(message)) {
        if (header.value.error.isNil()) {
            text.append(header.name).append(": ").append(header.value.text.view()).append("\r\n");
        }
    }
    text += "\r\n";
    return message.hasBody() ? text.append(message.getBody(), message.getStoredBodyLength()) : text;
}

} // namespace

void WireView::show(const ReadMessage& read) {
    if (read.isRefused()) {
        read.complain(*read.error);
        return;
    }
    try {
        Terminal::write(m_out, serialized(*read.message));
    } catch (const KxHandle<KxException>&) {
        Terminal::write(m_out, writableOf(*read.message));
        throw;
    }
}
