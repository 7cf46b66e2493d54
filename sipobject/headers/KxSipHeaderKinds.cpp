#include "sipobject/headers/KxSipHeaderKinds.h"

constinit decltype(KxSipHeaderKinds::s_uses) KxSipHeaderKinds::s_uses{};
