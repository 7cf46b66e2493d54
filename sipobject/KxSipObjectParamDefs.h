#pragma once

#include "sipobject/SipApi.h"

/** The configuration parameters of this library. They are registered in the process's ParameterInfoDB when the library
    is loaded. */
namespace Oskan::KxSipObject {

/** Boolean, "false": a Max-Forwards of 0 is no reason to refuse a request. */
inline constexpr const char* kIgnoreMaxForwards = "tandril.sip.ignoreMaxForwards";

/** Registers the parameters. False, and an error on the logger "tandril.infra.ParamDefs", when that fails, as it does
    the second time. */
KX_SIP_API bool addParametersToDB();

} // namespace Oskan::KxSipObject
