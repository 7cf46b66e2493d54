#include "tools/kxsip/ReadMessage.h"

#include "sipobject/KxSipParseKeepAliveException.h"
#include "sipobject/messages/KxSipReading.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Printable.h"
#include "util/KxAscii.h"

#include <iostream>

std::string DroppedLine::shown() const {
    constexpr std::size_t kShown = 60;
    return printable(std::string_view(text).substr(0, kShown)) + (text.size() > kShown ? "..." : "");
}

Outcome ReadMessage::outcome() const {
    if (isRefused()) {
        return Outcome::Refused;
    }
    if (message->getStatus() == KX_STATUS_INCOMPLETE) {
        return Outcome::HeaderDropped;
    }
    return message->isValid() ? Outcome::Valid : Outcome::Refused;
}

std::size_t ReadMessage::parse(std::string_view bytes) {
    const KxSipReading reading = KxSipReading::sRead(bytes);
    message = reading.message;
    salvaged = reading.salvaged;
    error = reading.failure;
    isIncomplete = reading.kind == KxSipReading::Kind::Incomplete;
    if (isRefused() && error.isNil()) { // only a ping or pong
        error = KxMake<KxSipParseKeepAliveException>("Keep-alive datagram encountered");
    }
    for (const KxSipReading::DroppedLine& faulty : reading.dropped) {
        dropped.push_back({faulty.line, std::string(KxAscii::trim(faulty.text)), faulty.why()});
    }
    return reading.consumed;
}

std::string ReadMessage::place() const {
    const std::string where = printable(file) + ", message " + std::to_string(index);
    return line > 1 ? where + ", line " + std::to_string(line) : where;
}

void ReadMessage::complain(const KxException& why) const {
    std::cerr << "kxsip: " << place() << ": " << classNameOf(why) << ": " << printable(why.getExceptionMessage())
              << '\n';
}
