#include "sipobject/messages/KxSipCancelMessage.h"

constinit const KxConstString KxSipCancelMessage::sMethodName{"CANCEL"};

static const KxSipMessage::Registration<KxSipCancelMessage> s_registration;
