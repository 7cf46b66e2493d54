#include "sipobject/messages/KxSipReferMessage.h"

constinit const KxConstString KxSipReferMessage::sMethodName{"REFER"};

static const KxSipMessage::Registration<KxSipReferMessage> s_registration;
