#include "sipobject/messages/KxSipRequestBuilder.h"

#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/messages/KxSipRequestOutline.h"
#include "sipobject/messages/KxSipResponse.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

/** Whether requests of the method make or refresh a dialog. [RFC 3261 12.1, RFC 3311 5.1, RFC 3515 2.4, RFC 6665 3] */
bool needsContact(std::string_view method) {
    static constexpr std::array<std::string_view, 5> kMethods = {"INVITE", "NOTIFY", "REFER", "SUBSCRIBE", "UPDATE"};
    return std::find(kMethods.begin(), kMethods.end(), method) != kMethods.end();
}

} // namespace

void KxSipRequestBuilder::build(const KxSipRequestParts& parts) {
    assemble(KxSipRequestOutline::sOf(parts));
}

void KxSipRequestBuilder::buildWithin(KxSipDialog& dialog, const KxSipDialogParts& parts) {
    const std::uint32_t number = dialog.nextSequence();
    assemble(dialog.outline(number, parts));
    dialog.m_localSequence = number;
}

void KxSipRequestBuilder::buildAck(const KxSipRequest& invite, const KxSipResponse& response,
                                   const KxSipDialogParts& parts) {
    KxSipDialog::sCheckPair(invite, response);
    if (response.getStatusCode() < 200) {
        KxSipParseError::sThrow("A provisional response has no ACK");
    }
    if (response.getStatusCode() >= 300) {
        const KxHandle<KxSipToHeader> to = response.getToHeader();
        buildInTransaction(invite, KxSipRequest::required(to, "Can't build SIP request without To header"));
        return;
    }
    const KxHandle<KxSipToHeader> to = invite.getToHeader();
    if (!to.isNil() && to->isTagPresent()) {
        KxSipParseError::sThrow("The ACK of a re-INVITE follows the route set of its dialog");
    }
    buildAck(KxSipDialog::sOfCaller(invite, response), invite, parts);
}

void KxSipRequestBuilder::buildAck(const KxSipDialog& dialog, const KxSipRequest& invite,
                                   const KxSipDialogParts& parts) {
    const std::uint32_t number =
        KxSipRequest::required(invite.getCSeqHeader(), "Can't build SIP request without CSeq header").getSeqNumber();
    KxSipRequestOutline outline = dialog.outline(number, parts);
    const auto* const via = invite.first<KxSipViaHeader>();
    if (outline.via.isNil() && via != nullptr) {
        auto own = KxMake<KxSipViaHeader>(*via);
        own->setBranchRFC3261();
        outline.via = own;
    }
    assemble(outline);
    m_request.addCopiesOf(invite, KxHeaderIDs::kAuthorization);
    m_request.addCopiesOf(invite, KxHeaderIDs::kProxyAuthorization);
}

void KxSipRequestBuilder::buildInTransaction(const KxSipRequest& invite, const KxSipToHeader& to) {
    KxSipRequestOutline outline;
    KxSipRequest::required(invite.getURI(), "Can't build SIP request without Request-URI");
    outline.uri = KxCopy(invite.getURI());
    outline.via = KxMake<KxSipViaHeader>(
        KxSipRequest::required(invite.getViaHeader(), "Can't build SIP request without Via header"));
    for (const KxSipRouteHeader& route : invite.values<KxSipRouteHeader>()) {
        outline.routes.push_back(KxMake<KxSipRouteHeader>(route));
    }
    outline.from = KxMake<KxSipFromHeader>(
        KxSipRequest::required(invite.getFromHeader(), "Can't build SIP request without From header"));
    outline.to = KxMake<KxSipToHeader>(to);
    outline.callId =
        KxSipRequest::required(invite.getCallIdHeader(), "Can't build SIP request without Call-ID header").getCallId();
    outline.cseq =
        KxSipRequest::required(invite.getCSeqHeader(), "Can't build SIP request without CSeq header").getSeqNumber();
    assemble(outline);
}

/** Adds the headers in the order that RFC 3261 7.3.1 recommends: what proxies need comes first. */
void KxSipRequestBuilder::assemble(const KxSipRequestOutline& outline) {
    if (outline.contact.isNil() && needsContact(m_method)) {
        KxSipText::sRaiseMissing("Contact");
    }
    m_request.m_Method = m_method;
    m_request.setURI(outline.uri);
    m_request.asynchAddHeader(outline.via, false);
    for (const KxHandle<KxSipHeader>& route : outline.routes) {
        m_request.asynchAddHeader(route, false);
    }
    m_request.asynchAddHeader(KxMake<KxSipMaxForwardsHeader>(outline.maxForwards), false);
    m_request.asynchAddHeader(outline.from, false);
    m_request.asynchAddHeader(outline.to, false);
    m_request.asynchAddHeader(KxMake<KxSipCallIdHeader>(outline.callId), false);
    m_request.asynchAddHeader(KxMake<KxSipCSeqHeader>(outline.cseq, m_method), false);
    m_request.asynchAddHeader(outline.contact, false);
    m_request.setBody(outline.body, outline.contentType);
}
