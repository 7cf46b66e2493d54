#include "sipobject/messages/KxSipByeMessage.h"

constinit const KxConstString KxSipByeMessage::sMethodName{"BYE"};

static const KxSipMessage::Registration<KxSipByeMessage> s_registration;
