#include "sipobject/messages/KxSipRegisterMessage.h"

constinit const KxConstString KxSipRegisterMessage::sMethodName{"REGISTER"};

static const KxSipMessage::Registration<KxSipRegisterMessage> s_registration;
