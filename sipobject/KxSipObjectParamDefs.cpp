#include "sipobject/KxSipObjectParamDefs.h"

#include "core/Exception.h"
#include "core/Logger.h"
#include "core/ParameterInfoDB.h"
#include "core/SingletonRegistry.h"

#include <memory>

namespace Oskan::KxSipObject {

namespace {

constexpr const char* kDescription =
    "Define how SIP max-forward headers are supported in the gateway. The Max-Forwards header field serves to "
    "limit the number of hops a request can transit on the way to its destination. ignoreMaxForwards can disable "
    "this funtionnality. When false (default behavior), the message is rejected if the header value 0 is "
    "reached. When true, the header value is ignored and the message pass thru even with 0. Set the parameter to "
    "true if your application needs to interact with non-compliant UACs. See RFC3261 paragraph 8.1.1.6";

/** There is one object in the process, so that the parameters are registered once. */
struct ParamDefs {
    const bool registered = addParametersToDB();
};

const ParamDefs* const s_paramDefs = SingletonRegistry::getInstance().getOrCreate<ParamDefs>(
    "ParamDefs::Singleton", [] { return std::make_unique<ParamDefs>(); });

} // namespace

bool addParametersToDB() {
    try {
        ParameterInfoDB::getNonConstInstance().addParameter(kIgnoreMaxForwards, ParameterInfo::Type::Boolean, "false",
                                                            kDescription);
    } catch (const Exception& failure) {
        Logger("tandril.infra.ParamDefs").log(LogLevel::Error, failure.what(), "KxSipObjectParamDefs", 33);
        return false;
    }
    return true;
}

} // namespace Oskan::KxSipObject
