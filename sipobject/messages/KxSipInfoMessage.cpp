#include "sipobject/messages/KxSipInfoMessage.h"

constinit const KxConstString KxSipInfoMessage::sMethodName{"INFO"};

static const KxSipMessage::Registration<KxSipInfoMessage> s_registration;
