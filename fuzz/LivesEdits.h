#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipheaders/KxSipDiversionHeader.h"
#include "sipheaders/KxSipHistoryInfoHeader.h"
#include "sipheaders/KxSipIdentityHeader.h"
#include "sipheaders/KxSipPAccessNetworkInfoHeader.h"
#include "sipheaders/KxSipPChargingVectorHeader.h"
#include "sipheaders/KxSipReasonHeader.h"
#include "sipheaders/KxSipRemotePartyIDHeader.h"
#include "sipheaders/KxSipResourcePriorityHeader.h"
#include "sipheaders/KxSipSIPETagHeader.h"
#include "sipheaders/KxSipSubscriptionStateHeader.h"
#include "sipheaders/KxSipUserToUserHeader.h"
#include "sipobject/KxSipObject.h"

#include <string>
#include <type_traits>

/** Writes a text into a header, through one of the setters of its class. T is std::string, which every function checks,
    or KxString, which those that only store it do not. */
template <class T>
class LivesEdit {
public:
    /** @param which chooses the setter. */
    LivesEdit(KxSipHeader& header, unsigned which, const T& text) : m_header(header), m_which(which), m_text(text) {}

    /** Throws what the setter throws. Returns false if nothing was called. */
    bool run() {
        m_isDone = false;
        editRouting();
        editTokens();
        editTexts();
        editOfLibrary();
        if (!m_isDone) {
            editAnyParameters<KxSipAcceptHeader, KxSipAcceptEncodingHeader, KxSipAcceptLanguageHeader,
                              KxSipAlertInfoHeader, KxSipErrorInfoHeader, KxSipCallInfoHeader, KxSipResponseKeyHeader,
                              KxSipMinSEHeader>();
        }
        return m_isDone;
    }

private:
    /** If the header is an H, calls the function that was chosen with it. */
    template <class H, class... F>
    void on(F... edits) {
        if constexpr (requires { H::kHeaderID; }) { // else a dynamic_cast, which is slow
            if (m_header.getHeaderID() != H::kHeaderID) {
                return;
            }
        }
        if (m_isDone) {
            return;
        }
        if (auto* const typed = dynamic_cast<H*>(&m_header)) {
            m_isDone = true;
            unsigned left = m_which % (sizeof...(F));
            ((left-- == 0 ? static_cast<void>(edits(*typed)) : static_cast<void>(0)), ...);
        }
    }
    /** As on, with the ways to edit parameters, too. */
    template <class H, class... F>
    void onList(F... edits) {
        on<H>(
            edits..., [this](H& h) { h.setParameter("x", m_text); }, [this](H& h) { setNamed(h); },
            [this](H& h) { h.removeParameter(std::string_view(m_text)); },
            [this](H& h) { editList(*h.getParameters()); });
    }
    /** As onList, with the ways to edit the address, too. */
    template <class H, class... F>
    void onAddress(F... edits) {
        onList<H>(
            edits..., [this](H& h) { editAddress(h); }, [this](H& h) { editURL(h, m_which / 8); });
    }
    template <class... H>
    void editAnyParameters() {
        (onList<H>(), ...);
    }

    /** In the classic grammar, an unknown transport must not be asked for. */
    void setTransport(KxSipViaHeader& via) {
        if (isRFC() || KxSocketImpl::parseTransport(KxString(std::string_view(m_text)).upper()).isValid()) {
            via.setTransport(m_text);
        }
    }
    /** A name that is no std::string can't be checked. */
    template <class H>
    void setNamed(H& header) {
        if constexpr (std::is_same_v<T, std::string>) {
            header.setParameter(m_text, std::string("v"));
        } else {
            header.setParameter(m_text.view(), KxString("v"));
        }
    }
    /** The list itself takes all texts: only texts that can be part of a line. */
    void editList(KxParameters& list) {
        if constexpr (std::is_same_v<T, KxString>) {
            if (m_which % 2 == 0) {
                list.setValue("y", m_text);
            } else {
                list.appendToValue("x", m_text.view());
            }
        } else {
            list.removeValue(m_text);
        }
    }
    template <class H>
    void editAddress(H& header) {
        if (m_which % 2 == 0) {
            header.setNameAddress(KxMake<KxSipNameAddress>(m_text));
        } else {
            header.setNameAddress(
                KxMake<KxSipNameAddress>(m_text, KxHandle<KxURI>(KxMake<KxSipURL>("sip:h;transport=tcp"))));
        }
    }
    template <class H>
    void editURL(H& header, unsigned which) {
        const KxHandle<KxSipURL> url = header.getNameAddress()->getURL();
        if (!url.isNil()) {
            editURL(*url, which);
        }
    }
    void editURL(KxSipURL& url, unsigned which) {
        const std::string before = written(url);
        const std::string why = outcomeOf([&] {
            switch (which % 6) {
            case 0:
                url.setUser(m_text);
                break;
            case 1:
                url.setUserPassword(m_text);
                break;
            case 2:
                url.setHost(m_text);
                break;
            case 3:
                url.setParameter("x", m_text);
                break;
            case 4:
                url.setMAddrParam(m_text);
                break;
            default:
                url.removeHeader(std::string_view(m_text));
            }
            return std::string();
        });
        if (!why.empty()) {
            same("a URL that refuses a text stays as it is", before, written(url));
        }
    }

    void editRouting() {
        using Via = KxSipViaHeader;
        onList<Via>([this](Via& h) { h.setBranch(m_text); }, [this](Via& h) { h.setMaddr(m_text); },
                    [this](Via& h) { h.setReceived(m_text); }, [this](Via& h) { h.setTTL(m_text); },
                    [this](Via& h) { setTransport(h); }, [this](Via& h) { h.setSource(m_text, 5070); },
                    [](Via& h) { h.setBranchRFC3261(); });
        onAddress<KxSipFromHeader>([this](KxSipFromHeader& h) { h.setTag(m_text); });
        onAddress<KxSipToHeader>([this](KxSipToHeader& h) { h.setTag(m_text); });
        using Contact = KxSipContactHeader;
        onAddress<Contact>([this](Contact& h) { h.setExpires(m_text); }, [this](Contact& h) { h.setQValue(m_text); },
                           [this](Contact& h) { h.setAction(m_text); }, [this](Contact& h) { h.setComment(m_text); },
                           [](Contact& h) { h.setQValueInThousandths(17); });
        onAddress<KxSipRouteHeader>();
        onAddress<KxSipRecordRouteHeader>();
        onAddress<KxSipReferredByHeader>();
        on<KxSipCallIdHeader>([this](KxSipCallIdHeader& h) { h.setCallId(m_text); });
        on<KxSipRAckHeader>([this](KxSipRAckHeader& h) { h.setMethod(m_text); });
        using Replaces = KxSipReplacesHeader;
        on<Replaces>([this](Replaces& h) { h.setCallID(m_text); }, [this](Replaces& h) { h.setFromTag(m_text); },
                     [this](Replaces& h) { h.setToTag(m_text); }, [this](Replaces& h) { h.setParameter("x", m_text); });
    }
    void editTokens() {
        on<KxSipSupportedHeader>([this](KxSipSupportedHeader& h) { h.setOptionTag(m_text); });
        on<KxSipRequireHeader>([this](KxSipRequireHeader& h) { h.setOptionTag(m_text); });
        on<KxSipProxyRequireHeader>([this](KxSipProxyRequireHeader& h) { h.setOptionTag(m_text); });
        on<KxSipUnsupportedHeader>([this](KxSipUnsupportedHeader& h) { h.setOptionTag(m_text); });
        on<KxSipAllowHeader>([this](KxSipAllowHeader& h) { h.setMethod(m_text); });
        on<KxSipContentEncodingHeader>([this](KxSipContentEncodingHeader& h) { h.setContentEncoding(m_text); });
        on<KxSipInReplyToHeader>([this](KxSipInReplyToHeader& h) { h.setCallId(m_text); });
        onList<KxSipContentTypeHeader>([this](KxSipContentTypeHeader& h) { h.setMediaType(m_text, m_text); });
        onList<KxSipEventHeader>([this](KxSipEventHeader& h) { h.setEvent(m_text); },
                                 [this](KxSipEventHeader& h) { h.setId(m_text); });
        onList<KxSipContentDispositionHeader>([this](KxSipContentDispositionHeader& h) { h.setType(m_text); },
                                              [this](KxSipContentDispositionHeader& h) { h.setHandling(m_text); });
        onList<KxSipSessionExpiresHeader>([this](KxSipSessionExpiresHeader& h) { h.setRefresher(m_text); });
        onList<KxSipRetryAfterHeader>([this](KxSipRetryAfterHeader& h) { h.setComment(m_text); },
                                      [this](KxSipRetryAfterHeader& h) { h.setDuration(m_text); });
    }
    void editTexts() {
        on<KxSipUnknownHeader>([this](KxSipUnknownHeader& h) { h.setValue(m_text); });
        on<KxSipSubjectHeader>([this](KxSipSubjectHeader& h) { h.setSubject(m_text); });
        on<KxSipOrganizationHeader>([this](KxSipOrganizationHeader& h) { h.setOrganization(m_text); });
        on<KxSipUserAgentHeader>([this](KxSipUserAgentHeader& h) { h.setUserAgent(m_text); });
        on<KxSipServerHeader>([this](KxSipServerHeader& h) { h.setServer(m_text); });
        on<KxSipPriorityHeader>([this](KxSipPriorityHeader& h) { h.setPriority(m_text); });
        on<KxSipTimestampHeader>([this](KxSipTimestampHeader& h) { h.setTimestamp(m_text); },
                                 [this](KxSipTimestampHeader& h) { h.setDelay(m_text); });
        on<KxSipWarningHeader>([this](KxSipWarningHeader& h) { h.setText(m_text); },
                               [this](KxSipWarningHeader& h) { h.setAgent(m_text); });
        using Info = KxSipAuthenticationInfoHeader;
        on<Info>([this](Info& h) { h.setNextnonce(m_text); }, [this](Info& h) { h.setQop(m_text); },
                 [this](Info& h) { h.setNc(m_text); });
        const auto onChallenge = [this](KxSipAuthenticateHeader& h) {
            if (const auto challenge = h.getDigestChallenge(); !challenge.isNil()) {
                challenge->setProperty(m_which % 2 == 0 ? "realm" : "opaque", m_text);
            }
        };
        on<KxSipWWWAuthenticateHeader>(onChallenge);
        on<KxSipProxyAuthenticateHeader>(onChallenge);
        const auto onCredentials = [this](KxSipAuthorizationHeader& h) {
            if (const auto credentials = h.getDigestCredentials(); !credentials.isNil()) {
                m_which % 2 == 0 ? credentials->setNonce(m_text) : credentials->setUsername(m_text);
            }
        };
        on<KxSipAuthorizationHeader>(onCredentials);
        on<KxSipProxyAuthorizationHeader>(onCredentials);
    }
    /** The headers of sipheaders/, which only the RFC grammar knows. */
    void editOfLibrary() {
        onAddress<KxSipDiversionHeader>([this](KxSipDiversionHeader& h) { h.setReason(m_text); },
                                        [this](KxSipDiversionHeader& h) { h.setPrivacy(m_text); });
        using History = KxSipHistoryInfoHeader;
        onAddress<History>([this](History& h) { h.setIndex(m_text); }, [this](History& h) { h.setPrivacy(m_text); },
                           [this](History& h) { h.setHiTargetParam("rc", m_text); },
                           [](History& h) { h.setReason(KxSipReasonHeader(std::string("SIP"))); });
        onList<KxSipReasonHeader>([this](KxSipReasonHeader& h) { h.setProtocol(m_text); },
                                  [this](KxSipReasonHeader& h) { h.setText(m_text); });
        onList<KxSipPChargingVectorHeader>([this](KxSipPChargingVectorHeader& h) { h.setICIDValue(m_text); },
                                           [this](KxSipPChargingVectorHeader& h) { h.setICIDGeneratedAt(m_text); },
                                           [this](KxSipPChargingVectorHeader& h) { h.setTransitIOI(m_text); });
        onList<KxSipPAccessNetworkInfoHeader>([this](KxSipPAccessNetworkInfoHeader& h) { h.setAccessType(m_text); },
                                              [this](KxSipPAccessNetworkInfoHeader& h) { h.setCGI(m_text); });
        onAddress<KxSipRemotePartyIDHeader>([this](KxSipRemotePartyIDHeader& h) { h.setParty(m_text); });
        on<KxSipResourcePriorityHeader>([this](KxSipResourcePriorityHeader& h) { h.setNamespace(m_text); },
                                        [this](KxSipResourcePriorityHeader& h) { h.setPriority(m_text); });
        on<KxSipSIPETagHeader>([this](KxSipSIPETagHeader& h) { h.setEntityTag(m_text); });
        onList<KxSipSubscriptionStateHeader>([this](KxSipSubscriptionStateHeader& h) { h.setState(m_text); },
                                             [this](KxSipSubscriptionStateHeader& h) { h.setReason(m_text); });
        using UserToUser = KxSipUserToUserHeader;
        onList<UserToUser>([this](UserToUser& h) { h.setData(m_text); },
                           [this](UserToUser& h) { h.setBytes(std::string_view(m_text)); },
                           [this](UserToUser& h) { h.setPurpose(m_text); });
        using Identity = KxSipIdentityHeader;
        onList<Identity>([this](Identity& h) { h.setPassport(m_text); }, [this](Identity& h) { h.setInfo(m_text); },
                         [this](Identity& h) { h.setAlgorithm(m_text); });
    }

    KxSipHeader& m_header;
    unsigned m_which;
    const T& m_text;
    bool m_isDone = false;
};
