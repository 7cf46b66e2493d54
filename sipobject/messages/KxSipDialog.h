#pragma once

#include "sipobject/SipApi.h"
#include "sipobject/address/KxSipNameAddress.h"

#include <cstdint>
#include <vector>

class KxSipHeader;
class KxSipMessage;
class KxSipRequest;
class KxSipResponse;
struct KxSipDialogParts;
struct KxSipRequestOutline;

/** What one side of a dialog knows of it, from which its requests within the dialog are built:

        KxSipDialog dialog = KxSipDialog::sOfCaller(*invite, *ok);
        const auto bye = KxSipByeMessage::sWithin(dialog, {.via = {.host = "10.0.0.1"}});

    A plain value that refers to no message. Used by one thread at a time. [RFC 3261 12] */
class KX_SIP_API KxSipDialog {
public:
    /** The dialog of the sender of a request, usually an INVITE, and of its response from 101 to 299. The route set is
        the Record-Route of the response in reverse order. [RFC 3261 12.1.2]
        Throws KxSipParseError if the response is not for the request, or if one of the headers that a dialog needs is
        missing: From, To, Call-ID, CSeq and, in a 2xx response, Contact. A provisional response without Contact, which
        RFC 3261 does not allow, makes a dialog whose remote target is the Request-URI, until confirm. */
    [[nodiscard]] static KxSipDialog sOfCaller(const KxSipRequest& request, const KxSipResponse& response);
    /** The dialog of the receiver of the request, who has sent the response. The route set is the Record-Route of the
        request. Throws as sOfCaller; here the Contact of the request is needed. [RFC 3261 12.1.1] */
    [[nodiscard]] static KxSipDialog sOfCallee(const KxSipRequest& request, const KxSipResponse& response);

    const KxString& getCallId() const { return m_callId; }
    /** Nil if the message had none, as from a peer that follows RFC 2543. */
    const KxString& getLocalTag() const { return m_local.tag; }
    const KxString& getRemoteTag() const { return m_remote.tag; }
    /** Where requests are sent, through the route set. */
    const KxURI& getRemoteTarget() const { return *m_remoteTarget; }
    const std::vector<KxHandle<KxSipNameAddress>>& getRouteSet() const { return m_routeSet; }
    /** The CSeq number of the last own request; 0 if there was none. */
    std::uint32_t getLocalSequence() const { return m_localSequence; }

    /** Whether a received message has the Call-ID and tags of this dialog. [RFC 3261 12.2.2] */
    [[nodiscard]] bool matches(const KxSipMessage& received) const;
    /** Takes the remote target from the Contact, if there is one, of a received re-INVITE or UPDATE or its 2xx
        response. [RFC 3261 12.2.1.2, 12.2.2] */
    void refresh(const KxSipMessage& received);
    /** For the caller, when the 2xx response arrives after the provisional one that made the dialog: takes route set
        and remote target of it. Throws as sOfCaller. [RFC 3261 13.2.2.4] */
    void confirm(const KxSipResponse& response);

private:
    friend class KxSipRequestBuilder;

    /** A side of the dialog. */
    struct Party {
        KxHandle<KxSipNameAddress> address = {};
        KxString tag = {};

        template <class H>
        static Party sOf(const KxSipMessage& message);
        template <class H>
        KxHandle<KxSipHeader> header() const;
    };

    /** Checks that the two make a dialog, and takes the Call-ID only. */
    KxSipDialog(const KxSipRequest& request, const KxSipResponse& response);
    /** Throws KxSipParseError unless both have the same Call-ID and CSeq. */
    static void sCheckPair(const KxSipRequest& request, const KxSipResponse& response);
    static KxHandle<KxURI> sTargetOf(const KxSipMessage& message);
    /** The Record-Route of a received message, in the order in which own requests visit the hops. */
    static std::vector<KxHandle<KxSipNameAddress>> sRouteSetOf(const KxSipMessage& message);
    std::uint32_t nextSequence() const;
    /** The outline of a request with that CSeq number. [RFC 3261 12.2.1.1] */
    KxSipRequestOutline outline(std::uint32_t cseq, const KxSipDialogParts& parts) const;

    KxString m_callId;
    Party m_local;
    Party m_remote;
    KxHandle<KxURI> m_remoteTarget;
    std::vector<KxHandle<KxSipNameAddress>> m_routeSet;
    std::uint32_t m_localSequence = 0;
};
