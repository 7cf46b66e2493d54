#pragma once

#include "core/CoreApi.h"
#include "core/Logger.h"

/** Loggers of the host's SIP layer, for notes on how other implementations behave. They are created on first use and
    live as long as the process. */
namespace Oskan::Sip {

/** "tandril.sip.UAInterop" */
KX_CORE_API Logger& getUAInteropLogger();

/** "tandril.sip.UAInterop.MaxForwards" */
KX_CORE_API Logger& getUAInteropMaxForwardsLogger();

} // namespace Oskan::Sip
