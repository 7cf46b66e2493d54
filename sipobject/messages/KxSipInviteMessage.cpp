#include "sipobject/messages/KxSipInviteMessage.h"

constinit const KxConstString KxSipInviteMessage::sMethodName{"INVITE"};

static const KxSipMessage::Registration<KxSipInviteMessage> s_registration;
