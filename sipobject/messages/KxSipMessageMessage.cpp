#include "sipobject/messages/KxSipMessageMessage.h"

constinit const KxConstString KxSipMessageMessage::sMethodName{"MESSAGE"};

static const KxSipMessage::Registration<KxSipMessageMessage> s_registration;
