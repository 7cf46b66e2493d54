#include "sipobject/messages/KxSipInviteMessage.h"

constinit const KxConstString KxSipInviteMessage::sMethodName{"INVITE"};

static const KxSipMessage::Registration<KxSipInviteMessage> s_registration;

KxSipInviteMessage::KxSipInviteMessage(const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                                       const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                                       const char* callId, std::uint32_t cseq, const char* contentType,
                                       const void* body, std::uint32_t bodyLength)
    : KxSipMethodMessage(requestUri, from, to, contact, callId, cseq, contentType, body, bodyLength) {}

bool KxSipInviteMessage::useLocalOutboundProxy() const {
    return m_useLocalOutboundProxy;
}
