#include "sipobject/messages/KxSipOptionsMessage.h"

constinit const KxConstString KxSipOptionsMessage::sMethodName{"OPTIONS"};

static const KxSipMessage::Registration<KxSipOptionsMessage> s_registration;
