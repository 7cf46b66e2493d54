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

constexpr const char* kGrammarDescription =
    "Define the grammar by which SIP messages are read and written. When false (default behavior), the classic grammar "
    "is "
    "used. When true, RFC 3261 and its updates are followed. The parameter is read once, before the first message.";

/** There is one object in the process, so that the parameters are registered once. */
struct ParamDefs {
    const bool registered = addParametersToDB();
};

const ParamDefs* const s_paramDefs = SingletonRegistry::getInstance().getOrCreate<ParamDefs>(
    "ParamDefs::Singleton", [] { return std::make_unique<ParamDefs>(); });

} // namespace

bool addParametersToDB() {
    try {
        ParameterInfoDB& parameters = ParameterInfoDB::getNonConstInstance();
        parameters.addParameter(kIgnoreMaxForwards, ParameterInfo::Type::Boolean, "false", kDescription);
        parameters.addParameter(kRFCGrammar, ParameterInfo::Type::Boolean, "false", kGrammarDescription);
    } catch (const Exception& failure) {
        Logger("tandril.infra.ParamDefs").log(LogLevel::Error, failure.what(), "KxSipObjectParamDefs", 33);
        return false;
    }
    return true;
}

} // namespace Oskan::KxSipObject
