#include "sipobject/messages/KxSipRequestOutline.h"

#include "sipobject/KxSipCSeq.h"
#include "sipobject/KxSipCallid.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/KxSipTag.h"

/** Whether the proxy follows RFC 3261. [RFC 3261 19.1.1] */
static bool isLooseRouter(const KxSipNameAddress& hop) {
    const KxHandle<KxSipURL> url = hop.getURL();
    return url.isNil() || url->getParameters()->isPresent("lr");
}

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
    std::vector<KxHandle<KxSipNameAddress>> hops;
    for (const KxSipPart<KxSipRouteHeader>& route : parts.routes) {
        hops.push_back(route.needed("Route")->getNameAddress());
    }
    outline.setWay(uri, hops);
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

void KxSipRequestOutline::setWay(const KxHandle<KxURI>& target, const std::vector<KxHandle<KxSipNameAddress>>& hops) {
    const bool isStrict = !hops.empty() && !isLooseRouter(*hops.front());
    setURI(isStrict ? *hops.front()->getURI() : *target);
    for (auto hop = hops.begin() + (isStrict ? 1 : 0); hop != hops.end(); ++hop) {
        routes.push_back(KxMake<KxSipRouteHeader>(*hop));
    }
    if (isStrict) {
        routes.push_back(KxMake<KxSipRouteHeader>(KxMake<KxSipNameAddress>(KxString(""), target)));
    }
}

void KxSipRequestOutline::setURI(const KxURI& given) {
    uri = KxHandle<KxURI>(given.clone());
    if (uri->isSipURL()) {
        auto& url = static_cast<KxSipURL&>(*uri);
        url.clearHeaders();
        url.removeParameter("method");
    }
}
