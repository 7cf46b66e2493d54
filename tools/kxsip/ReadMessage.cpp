#include "tools/kxsip/ReadMessage.h"

Outcome ReadMessage::outcome() const {
    if (isRefused()) {
        return Outcome::Refused;
    }
    if (message->getStatus() == KX_STATUS_INCOMPLETE) {
        return Outcome::HeaderDropped;
    }
    return message->isValid() ? Outcome::Valid : Outcome::Refused;
}
