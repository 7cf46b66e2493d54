#pragma once

#include "sipobject/messages/KxSipRequest.h"

/** A request whose method has no class of its own. */
class KX_SIP_API KxSipUnknownRequest final : public KxSipRequest {
public:
    KxSipUnknownRequest();
    /** Throws KxException for an empty method. */
    explicit KxSipUnknownRequest(const char* method);
    KxSipUnknownRequest(const KxSipUnknownRequest&) = default;

    KxSipUnknownRequest* clone() const override;
};
