#include "tools/kxsip/ReadMessage.h"

#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Printable.h"
#include "util/KxByteArrayInputStream.h"

#include <iostream>

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
    KxByteArrayInputStream in(bytes);
    try {
        message = KxSipMessage::sConstructFrom(in);
    } catch (const KxHandle<KxException>& why) {
        error = why;
    }
    return bytes.size() - in.available();
}

std::string ReadMessage::place() const {
    const std::string where = printable(file) + ", message " + std::to_string(index);
    return line > 1 ? where + ", line " + std::to_string(line) : where;
}

void ReadMessage::complain(const KxException& why) const {
    std::cerr << "kxsip: " << place() << ": " << classNameOf(why) << ": " << printable(why.getExceptionMessage())
              << '\n';
}
