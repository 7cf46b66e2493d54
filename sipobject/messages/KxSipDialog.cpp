#include "sipobject/messages/KxSipDialog.h"

#include "sipobject/KxSipCSeq.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipRecordRouteHeader.h"
#include "sipobject/messages/KxSipRequestOutline.h"
#include "sipobject/messages/KxSipResponse.h"

#include <algorithm>
#include <string>

namespace {

template <class H, class M>
auto& needed(M& message) {
    auto* const header = message.template first<H>();
    if (header == nullptr) {
        KxSipParseError::sThrow(std::string("Header is missing: ").append(H::sToken));
    }
    return *header;
}

} // namespace

template <class H>
KxSipDialog::Party KxSipDialog::Party::sOf(const KxSipMessage& message) {
    const H& header = needed<H>(message);
    return {KxCopy(header.getNameAddress()), header.getTag()};
}

template <class H>
KxHandle<KxSipHeader> KxSipDialog::Party::header() const {
    auto made = KxMake<H>(address);
    if (!tag.empty()) {
        made->storeTag(tag); // the peer's, whatever it contains
    }
    return made;
}

KxSipDialog::KxSipDialog(const KxSipRequest& request, const KxSipResponse& response) {
    sCheckPair(request, response);
    if (response.getStatusCode() <= 100 || response.getStatusCode() >= 300) {
        KxSipParseError::sThrow("Only a response from 101 to 299 makes a dialog");
    }
    m_callId = needed<KxSipCallIdHeader>(request).getCallId();
}

KxSipDialog KxSipDialog::sOfCaller(const KxSipRequest& request, const KxSipResponse& response) {
    KxSipDialog dialog(request, response);
    dialog.m_local = Party::sOf<KxSipFromHeader>(request);
    dialog.m_remote = Party::sOf<KxSipToHeader>(response);
    dialog.m_localSequence = needed<KxSipCSeqHeader>(request).getSeqNumber();
    const bool hasTarget = response.getStatusCode() >= 200 || response.has<KxSipContactHeader>();
    if (!hasTarget && !request.getURI().isNil()) {
        dialog.m_remoteTarget = KxCopy(request.getURI());
        dialog.m_routeSet = sRouteSetOf(response);
    } else {
        dialog.confirm(response);
    }
    return dialog;
}

KxSipDialog KxSipDialog::sOfCallee(const KxSipRequest& request, const KxSipResponse& response) {
    KxSipDialog dialog(request, response);
    dialog.m_local = Party::sOf<KxSipToHeader>(response);
    dialog.m_remote = Party::sOf<KxSipFromHeader>(request);
    dialog.m_remoteTarget = sTargetOf(request);
    dialog.m_routeSet = sRouteSetOf(request);
    return dialog;
}

void KxSipDialog::sCheckPair(const KxSipRequest& request, const KxSipResponse& response) {
    const auto& asked = needed<KxSipCSeqHeader>(request);
    const auto& answered = needed<KxSipCSeqHeader>(response);
    if (needed<KxSipCallIdHeader>(request).getCallId() != needed<KxSipCallIdHeader>(response).getCallId() ||
        asked.getSeqNumber() != answered.getSeqNumber() || asked.getMethod() != answered.getMethod()) {
        KxSipParseError::sThrow("The response is not for the request");
    }
}

KxHandle<KxURI> KxSipDialog::sTargetOf(const KxSipMessage& message) {
    const auto& contact = needed<KxSipContactHeader>(message);
    if (contact.isWildCard() || contact.getNameAddress()->getURI().isNil()) {
        KxSipParseError::sThrow("A dialog needs a Contact with a URI");
    }
    return KxCopy(contact.getNameAddress()->getURI());
}

std::vector<KxHandle<KxSipNameAddress>> KxSipDialog::sRouteSetOf(const KxSipMessage& message) {
    std::vector<KxHandle<KxSipNameAddress>> routes;
    for (const KxSipRecordRouteHeader& route : message.values<KxSipRecordRouteHeader>()) {
        routes.push_back(KxCopy(route.getNameAddress()));
    }
    if (message.isResponse()) {
        std::reverse(routes.begin(), routes.end());
    }
    return routes;
}

bool KxSipDialog::matches(const KxSipMessage& received) const {
    const auto* const callId = received.first<KxSipCallIdHeader>();
    const auto* const from = received.first<KxSipFromHeader>();
    const auto* const to = received.first<KxSipToHeader>();
    if (callId == nullptr || from == nullptr || to == nullptr || callId->getCallId() != m_callId) {
        return false;
    }
    const bool isFromPeer = received.isRequest();
    return from->getTag() == (isFromPeer ? m_remote.tag : m_local.tag) &&
           to->getTag() == (isFromPeer ? m_local.tag : m_remote.tag);
}

void KxSipDialog::refresh(const KxSipMessage& received) {
    if (received.has<KxSipContactHeader>()) {
        m_remoteTarget = sTargetOf(received);
    }
}

void KxSipDialog::confirm(const KxSipResponse& response) {
    KxHandle<KxURI> target = sTargetOf(response);
    std::vector<KxHandle<KxSipNameAddress>> routes = sRouteSetOf(response);
    m_remoteTarget = std::move(target);
    m_routeSet = std::move(routes);
}

std::uint32_t KxSipDialog::nextSequence() const {
    return m_localSequence == 0 ? static_cast<std::uint32_t>(KxSipCSeq()) + 1 : m_localSequence + 1;
}

KxSipRequestOutline KxSipDialog::outline(std::uint32_t cseq, const KxSipDialogParts& parts) const {
    KxSipRequestOutline outline;
    outline.setWay(m_remoteTarget, m_routeSet);
    outline.from = m_local.header<KxSipFromHeader>();
    outline.to = m_remote.header<KxSipToHeader>();
    outline.callId = m_callId;
    outline.cseq = cseq;
    outline.take(parts);
    return outline;
}
