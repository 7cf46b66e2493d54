#pragma once

#include "sipobject/messages/KxSipMethodMessage.h"

/** INVITE. Invites the recipient to a session. [RFC 3261 13] */
class KX_SIP_API KxSipInviteMessage : public KxSipMethodMessage<KxSipInviteMessage> {
public:
    using KxSipMethodMessage::KxSipMethodMessage;
    /** Builds an INVITE to a copy of the URI; see KxSipRequest. */
    KxSipInviteMessage(const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                       const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                       const char* callId, std::uint32_t cseq, const char* contentType, const void* body,
                       std::uint32_t bodyLength);
    KxSipInviteMessage(const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                       const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                       KxSipAnyText callId, std::uint32_t cseq, KxSipAnyText contentType, const void* body,
                       std::uint32_t bodyLength)
        : KxSipInviteMessage(requestUri, from, to, contact, callId.line().c_str(), cseq,
                             contentType.neededIf(bodyLength != 0, "Content-Type").c_str(), body, bodyLength) {}

    bool useLocalOutboundProxy() const override;
    /** The default is false. */
    void setUseLocalOutboundProxy(bool use) { m_useLocalOutboundProxy = use; }

    static const KxConstString sMethodName;

private:
    friend struct Registration<KxSipInviteMessage>;

    KxSipInviteMessage() = default;

    bool m_useLocalOutboundProxy = false;
};
