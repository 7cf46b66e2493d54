#include "sipobject/messages/KxSipPrackMessage.h"

constinit const KxConstString KxSipPrackMessage::sMethodName{"PRACK"};

static const KxSipMessage::Registration<KxSipPrackMessage> s_registration;
