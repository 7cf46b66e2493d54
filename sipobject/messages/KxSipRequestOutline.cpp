#include "sipobject/messages/KxSipRequestOutline.h"

#include "sipobject/KxSipCSeq.h"
#include "sipobject/KxSipCallid.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipTag.h"

KxSipRequestOutline KxSipRequestOutline::sOf(const KxSipRequestParts& parts) {
    KxSipRequestOutline outline;
    const KxHandle<KxSipFromHeader> from = parts.from.needed("From");
    if (!from->isTagPresent()) {
        from->setTag(KxSipTag::sRandom().c_str());
    }
    const KxHandle<KxSipToHeader> to = parts.to.needed("To");
    const KxHandle<KxURI> uri = parts.requestUri.isNone() ? to->getNameAddress()->getURI() : parts.requestUri.make();
    if (uri.isNil()) {
        KxSipParseError::sThrow("Can't build SIP request without Request-URI");
    }
    outline.setURI(*uri);
    for (const KxSipPart<KxSipRouteHeader>& route : parts.routes) {
        outline.routes.push_back(route.needed("Route"));
    }
    outline.from = from;
    outline.to = to;
    outline.callId = parts.callId.isNone() ? KxString(KxSipCallid().getValue()) : parts.callId.line();
    if (outline.callId.view().find_first_of(" \t") != std::string_view::npos) {
        KxSipParseError::sThrow("A Call-ID has no blanks");
    }
    outline.cseq = parts.cseq == 0 ? static_cast<std::uint32_t>(KxSipCSeq()) : parts.cseq;
    outline.take({.contact = parts.contact,
                  .maxForwards = parts.maxForwards,
                  .via = parts.via,
                  .contentType = parts.contentType,
                  .body = parts.body});
    return outline;
}

void KxSipRequestOutline::take(const KxSipDialogParts& parts) {
    via = parts.via.make();
    contact = parts.contact.make();
    maxForwards = parts.maxForwards;
    contentType = parts.contentType.line();
    body = parts.body;
}

void KxSipRequestOutline::setURI(const KxURI& given) {
    uri = KxHandle<KxURI>(given.clone());
    if (uri->isSipURL()) {
        auto& url = static_cast<KxSipURL&>(*uri);
        url.clearHeaders();
        url.removeParameter("method");
    }
}
