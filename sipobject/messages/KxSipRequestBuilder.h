#pragma once

#include "sipobject/messages/KxSipDialog.h"
#include "sipobject/messages/KxSipDialogParts.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipRequestParts.h"

/** Builds requests by parts, and derives them, for the static functions of the request classes. A step fills an empty
    request of the method. If it throws KxSipParseError, the request is not to be used. */
class KX_SIP_API KxSipRequestBuilder {
public:
    KxSipRequestBuilder(KxSipRequest& request, const KxString& method) : m_request(request), m_method(method) {}

    void build(const KxSipRequestParts& parts);
    void buildWithin(KxSipDialog& dialog, const KxSipDialogParts& parts);
    void buildAck(const KxSipRequest& invite, const KxSipResponse& response, const KxSipDialogParts& parts);
    void buildAck(const KxSipDialog& dialog, const KxSipRequest& invite, const KxSipDialogParts& parts);
    /** A request in the transaction of the INVITE, to the party in `to`: CANCEL, or ACK of a non-2xx response. */
    void buildInTransaction(const KxSipRequest& invite, const KxSipToHeader& to);

private:
    void assemble(const KxSipRequestOutline& outline);

    KxSipRequest& m_request;
    const KxString& m_method;
};
