#include "sipobject/messages/KxSipAckMessage.h"

constinit const KxConstString KxSipAckMessage::sMethodName{"ACK"};

static const KxSipMessage::Registration<KxSipAckMessage> s_registration;
