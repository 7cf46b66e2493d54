#pragma once

#include "core/CoreApi.h"
#include "core/Logger.h"

/** Loggers of the host's SIP layer for notes on how other implementations behave. Made on first use, kept as long as
    the process lives. */
namespace Oskan::Sip {

/** "tandril.sip.UAInterop" */
KX_CORE_API Logger& getUAInteropLogger();

/** "tandril.sip.UAInterop.MaxForwards" */
KX_CORE_API Logger& getUAInteropMaxForwardsLogger();

} // namespace Oskan::Sip
