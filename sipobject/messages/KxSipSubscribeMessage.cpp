#include "sipobject/messages/KxSipSubscribeMessage.h"

constinit const KxConstString KxSipSubscribeMessage::sMethodName{"SUBSCRIBE"};

static const KxSipMessage::Registration<KxSipSubscribeMessage> s_registration;
