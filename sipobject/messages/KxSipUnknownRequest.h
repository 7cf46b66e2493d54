#pragma once

#include "sipobject/messages/KxSipRequest.h"

/** A request whose method has no class of its own. Its constructors are those of KxSipRequest. */
class KX_SIP_API KxSipUnknownRequest : public KxSipRequest {
public:
    using KxSipRequest::KxSipRequest;
    KxSipUnknownRequest();
    /** Throws KxException for an empty method. */
    explicit KxSipUnknownRequest(const char* method);
    explicit KxSipUnknownRequest(const KxString& method) : KxSipUnknownRequest(KxSipText(method)) {}
    explicit KxSipUnknownRequest(KxSipText method) : KxSipRequest(method.needed("method")) {}
    KxSipUnknownRequest(const KxSipUnknownRequest&) = default;

    KxSipUnknownRequest* clone() const override;
};
