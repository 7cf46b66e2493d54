#pragma once

#include "sipobject/messages/KxSipDialogParts.h"

#include <vector>

/** All that determines a request to be built: what KxSipRequestParts, a KxSipDialog, or the rules for ACK and CANCEL
    come to. Every object in it is new. */
struct KxSipRequestOutline {
    KxHandle<KxURI> uri = {};
    KxHandle<KxSipHeader> via = {}; ///< Nil: none.
    std::vector<KxHandle<KxSipHeader>> routes = {};
    KxHandle<KxSipHeader> from = {};
    KxHandle<KxSipHeader> to = {};
    KxString callId = {};
    std::uint32_t cseq = 0;
    KxHandle<KxSipHeader> contact = {}; ///< Nil: none.
    std::uint32_t maxForwards = 70;
    KxString contentType = {};
    std::string_view body = {};

    /** Of a request outside a dialog. Throws KxSipParseError for parts that are missing or can't be read. */
    static KxSipRequestOutline sOf(const KxSipRequestParts& parts);
    /** Takes over the parts that a dialog does not determine. Throws KxSipParseError for parts that can't be read. */
    void take(const KxSipDialogParts& parts);
    /** Sets Request-URI and Route so that the request reaches the target through the hops. If the first one is a strict
        router, it becomes the Request-URI, and the target the last Route. What a Request-URI must not have is left out.
        [RFC 3261 12.2.1.1, 19.1.1] */
    void setWay(const KxHandle<KxURI>& target, const std::vector<KxHandle<KxSipNameAddress>>& hops);

private:
    void setURI(const KxURI& given);
};
