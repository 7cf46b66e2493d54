#pragma once

#include "sipobject/messages/KxSipRequestBuilder.h"

/** The code common to the classes of the known methods: copying, and the building constructors of KxSipRequest, to
    which the class supplies its method. A class M derives from KxSipMethodMessage<M>, inherits these constructors, has
    a private default constructor for the parser and defines

        static const KxConstString sMethodName;

    CSeqNumber and Body are the types of these two arguments of the building constructors. */
template <class M, class CSeqNumber = std::uint32_t, class Body = void>
class KX_SIP_API KxSipMethodMessage : public KxSipRequest {
public:
    KxSipMethodMessage(const char* from, const char* to, const char* contact, const char* callId, CSeqNumber cseq,
                       const char* contentType, const Body* body, std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName.c_str(), from, to, contact, callId, static_cast<std::uint32_t>(cseq), contentType,
                       body, bodyLength) {}
    KxSipMethodMessage(const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                       const KxHandle<KxSipContactHeader>& contact, const char* callId, CSeqNumber cseq,
                       const char* contentType, const Body* body, std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName.c_str(), from, to, contact, callId, static_cast<std::uint32_t>(cseq), contentType,
                       body, bodyLength) {}
    KxSipMethodMessage(const KxHandle<KxSipNameAddress>& requestUri, const KxHandle<KxSipFromHeader>& from,
                       const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                       const char* callId, CSeqNumber cseq, const char* contentType, const Body* body,
                       std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName.c_str(), requestUri, from, to, contact, callId, static_cast<std::uint32_t>(cseq),
                       contentType, body, bodyLength) {}

    // The same with texts of any type.
    KxSipMethodMessage(KxSipAnyText from, KxSipAnyText to, KxSipAnyText contact, KxSipAnyText callId, CSeqNumber cseq,
                       KxSipAnyText contentType, const Body* body, std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName, from, to, contact, callId, static_cast<std::uint32_t>(cseq), contentType, body,
                       bodyLength) {}
    KxSipMethodMessage(const KxHandle<KxSipFromHeader>& from, const KxHandle<KxSipToHeader>& to,
                       const KxHandle<KxSipContactHeader>& contact, KxSipAnyText callId, CSeqNumber cseq,
                       KxSipAnyText contentType, const Body* body, std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName, from, to, contact, callId, static_cast<std::uint32_t>(cseq), contentType, body,
                       bodyLength) {}
    KxSipMethodMessage(const KxHandle<KxSipNameAddress>& requestUri, const KxHandle<KxSipFromHeader>& from,
                       const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                       KxSipAnyText callId, CSeqNumber cseq, KxSipAnyText contentType, const Body* body,
                       std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName, requestUri, from, to, contact, callId, static_cast<std::uint32_t>(cseq),
                       contentType, body, bodyLength) {}
    /** A request outside a dialog, of this method; see KxSipRequest::sBuild. */
    [[nodiscard]] static KxHandle<M> sBuild(const KxSipRequestParts& parts) {
        KxHandle<M> request = sEmpty();
        KxSipRequestBuilder(*request, M::sMethodName).build(parts);
        return request;
    }
    /** A request within a dialog, of this method; see KxSipRequest::sWithin. */
    [[nodiscard]] static KxHandle<M> sWithin(KxSipDialog& dialog, const KxSipDialogParts& parts = {}) {
        KxHandle<M> request = sEmpty();
        KxSipRequestBuilder(*request, M::sMethodName).buildWithin(dialog, parts);
        return request;
    }

    KxSipRequest* clone() const override { return new M(static_cast<const M&>(*this)); }

protected:
    static KxHandle<M> sEmpty() { return KxHandle<M>::sOfNew(KxSipMessage::Registration<M>::sMake()); }
    /** For the parser, which sets the method. */
    KxSipMethodMessage() = default;
    /** Builds a request to a copy of the URI. */
    KxSipMethodMessage(const KxHandle<KxURI>& requestUri, const KxHandle<KxSipFromHeader>& from,
                       const KxHandle<KxSipToHeader>& to, const KxHandle<KxSipContactHeader>& contact,
                       const char* callId, CSeqNumber cseq, const char* contentType, const Body* body,
                       std::uint32_t bodyLength)
        : KxSipRequest(M::sMethodName.c_str(), requestUri, from, to, contact, callId, static_cast<std::uint32_t>(cseq),
                       contentType, body, bodyLength) {}
    /** Creates an empty request, for the constructors that derive a request from another message. */
    explicit KxSipMethodMessage(const KxString& method) : KxSipRequest(method) {}
};
