#include "sipobject/messages/KxSipNotifyMessage.h"

constinit const KxConstString KxSipNotifyMessage::sMethodName{"NOTIFY"};

static const KxSipMessage::Registration<KxSipNotifyMessage> s_registration;
