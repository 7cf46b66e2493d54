#include "core/SipLoggers.h"

namespace Oskan::Sip {

Logger& getUAInteropLogger() {
    static Logger& logger = *new Logger("tandril.sip.UAInterop");
    return logger;
}

Logger& getUAInteropMaxForwardsLogger() {
    static Logger& logger = *new Logger("tandril.sip.UAInterop.MaxForwards");
    return logger;
}

} // namespace Oskan::Sip
