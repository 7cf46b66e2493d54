#include "tools/kxsip/ReadMessage.h"

#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Printable.h"

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

void ReadMessage::complain(const KxException& why) const {
    std::cerr << "kxsip: " << printable(file) << ", message " << index << ": " << classNameOf(why) << ": "
              << printable(why.getExceptionMessage()) << '\n';
}
