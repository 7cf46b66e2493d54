#pragma once

#include "sipobject/SipApi.h"

/** The configuration parameters of this library. They are registered in the process's ParameterInfoDB when the library
    is loaded. */
namespace Oskan::KxSipObject {

/** Boolean, default "false". If true, a request with a Max-Forwards of 0 is not refused. */
inline constexpr const char* kIgnoreMaxForwards = "tandril.sip.ignoreMaxForwards";

/** Boolean, default "false". If true, messages are read and written by the RFC grammar: see KxSipGrammar. Read once. */
inline constexpr const char* kRFCGrammar = "tandril.sip.rfcGrammar";

/** Registers the parameters. If that fails, as it does on a second call, logs an error on the logger
    "tandril.infra.ParamDefs" and returns false. */
KX_SIP_API bool addParametersToDB();

} // namespace Oskan::KxSipObject
