#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipobject/auth/KxSipDigestChallengeInfo.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipAcceptEncodingHeader.h"
#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipAcceptLanguageHeader.h"
#include "sipobject/headers/KxSipAlertInfoHeader.h"
#include "sipobject/headers/KxSipAllowEventsHeader.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipAuthenticationInfoHeader.h"
#include "sipobject/headers/KxSipCCDiversionHeader.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipContentDispositionHeader.h"
#include "sipobject/headers/KxSipContentEncodingHeader.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/headers/KxSipDateHeader.h"
#include "sipobject/headers/KxSipErrorInfoHeader.h"
#include "sipobject/headers/KxSipEventHeader.h"
#include "sipobject/headers/KxSipExpiresHeader.h"
#include "sipobject/headers/KxSipInReplyToHeader.h"
#include "sipobject/headers/KxSipMIMEVersionHeader.h"
#include "sipobject/headers/KxSipMaxForwardsHeader.h"
#include "sipobject/headers/KxSipMinExpiresHeader.h"
#include "sipobject/headers/KxSipMinSEHeader.h"
#include "sipobject/headers/KxSipOrganizationHeader.h"
#include "sipobject/headers/KxSipPriorityHeader.h"
#include "sipobject/headers/KxSipProxyAuthenticateHeader.h"
#include "sipobject/headers/KxSipProxyAuthorizationHeader.h"
#include "sipobject/headers/KxSipProxyRequireHeader.h"
#include "sipobject/headers/KxSipRAckHeader.h"
#include "sipobject/headers/KxSipRSeqHeader.h"
#include "sipobject/headers/KxSipRecordRouteHeader.h"
#include "sipobject/headers/KxSipReferToHeader.h"
#include "sipobject/headers/KxSipReferredByHeader.h"
#include "sipobject/headers/KxSipReplacesHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipResponseKeyHeader.h"
#include "sipobject/headers/KxSipRetryAfterHeader.h"
#include "sipobject/headers/KxSipRouteHeader.h"
#include "sipobject/headers/KxSipServerHeader.h"
#include "sipobject/headers/KxSipSessionExpiresHeader.h"
#include "sipobject/headers/KxSipSessionHeader.h"
#include "sipobject/headers/KxSipSubjectHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipTimestampHeader.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "sipobject/headers/KxSipUnsupportedHeader.h"
#include "sipobject/headers/KxSipUserAgentHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/headers/KxSipWWWAuthenticateHeader.h"
#include "sipobject/headers/KxSipWarningHeader.h"
#include "sipobject/messages/KxSipResponse.h"

#include <concepts>
#include <optional>
#include <string>

/** Calls the getters of a message and of its headers and collects what they return: "value|value|...". */
class MessageReading {
public:
    explicit MessageReading(const KxSipMessage& message) {
        readMessage(message);
        if (const auto* const request = dynamic_cast<const KxSipRequest*>(&message)) {
            readRequest(*request);
        } else if (const auto* const response = dynamic_cast<const KxSipResponse*>(&message)) {
            take(response->getStatusCode(), response->getReasonPhrase(), response->getAuthenticateHeader());
        }
        for (const HeaderID id : message.getHeaderOrder()) {
            for (const KxSipHeader* value = message.getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                readHeader(*value);
            }
        }
    }
    const std::string& text() const { return m_text; }

private:
    template <class... Values>
    void take(const Values&... values) {
        (takeOne(values), ...);
    }
    void takeOne(const KxString& value) { (m_text += value.isNil() ? "-" : value.view()) += '|'; }
    void takeOne(const char* value) { (m_text += value == nullptr ? "-" : value) += '|'; }
    template <class Number>
    requires(std::integral<Number> || std::is_enum_v<Number>) void takeOne(Number value) {
        (m_text += std::to_string(+value)) += '|';
    }
    template <class Number>
    void takeOne(const std::optional<Number>& number) {
        take(number.has_value(), number.value_or(0));
    }
    void takeOne(const KxDate& date) { takeOne(date.getSeconds()); }
    void takeOne(const KxSipURL& url) {
        take(written(url), url.getUser(), url.getUserPassword(), url.getHost(), url.getPort(), url.hasPort(),
             url.getTTL(), url.getUserParam(), url.getMethodParam(), url.getMAddrParam(), url.getTransportParam(),
             url.getParameters(), url.getHeaders(), url.numParameters(), url.numHeaders(), url.getHeader("subject"),
             url == url);
    }
    void takeOne(const std::string& value) { (m_text += value) += '|'; }
    void takeOne(const KxHandle<KxSipURL>& url) { url.isNil() ? takeOne("-") : takeOne(*url); }
    template <class T>
    void takeOne(const KxHandle<T>& object) {
        if (object.isNil()) {
            takeOne("-");
        } else if constexpr (std::derived_from<T, KxSipCredentialsInfo>) {
            take(object->getUsername(), object->getPassword(), object->getRealm());
        } else {
            take(outcomeOf([&] { return written(*object); })); // credentials may not be written
        }
    }
    void takeOne(const KxHandle<KxSipNameAddress>& address) {
        if (!address.isNil()) {
            take(written(*address), address->getDisplayName(), address->getURLString(), address->hasBrackets());
            takeOne(address->getURL());
        }
    }

    /** Collects what the getters return, if the header is of their class. */
    template <class H, class... Getters>
    void readAs(const KxSipHeader& header, Getters... getters) {
        if constexpr (requires { H::kHeaderID; }) { // most are not, and a dynamic_cast to find out is slow
            if (header.getHeaderID() != H::kHeaderID) {
                return;
            }
        }
        if (const auto* const typed = dynamic_cast<const H*>(&header)) {
            take((typed->*getters)()...);
            if constexpr (requires { typed->getParameters(); }) {
                take(typed->getParameters());
            }
            if constexpr (requires { typed->getNameAddress(); }) {
                take(typed->getNameAddress());
            }
            if constexpr (requires { typed->getURL(); }) {
                take(typed->getURL());
            }
            if constexpr (requires { typed->getQValue(); }) {
                take(typed->getQValue(), typed->getQValueInThousandths());
            }
        }
    }

    void readMessage(const KxSipMessage& message) {
        take(message.isRequest(), message.isResponse(), message.hasBody(), message.getBodyLength(),
             message.getStoredBodyLength(), message.getBodyType(), message.getVersionHigh(), message.getVersionLow(),
             message.getBody(), message.getConnectionPort(), message.getLocalPort(), message.isSupported("100rel"),
             message.isRequired("timer"), message.getConnectionTransport(),
             message.getConnectionAddress().getHostAddress(), message.getLocalAddress().getHostAddress());
        take(message.getViaHeader(), message.getFromHeader(), message.getToHeader(), message.getCSeqHeader(),
             message.getCallIdHeader(), message.getContentLengthHeader(), message.getContactHeader(),
             message.getContentEncodingHeader(), message.getContentTypeHeader(), message.getSessionExpiresHeader(),
             message.getSubjectHeader(), message.getSupportedHeader());
    }

    void readRequest(const KxSipRequest& request) {
        take(request.getMethod(), request.getURI(), request.getRequestURIHost(), request.getRequestURIPort(),
             request.getNameAddress(), request.getPreferredIpAddrStr(), request.useLocalOutboundProxy(),
             request.tooManyHops(), request.getAuthorizationHeader());
        if (!request.getURI().isNil() && request.getURI()->isSipURL()) {
            take(request.getURL());
        }
    }

    void readHeader(const KxSipHeader& header) {
        take(header.getToken(), header.getExpandedToken(), header.getCompactToken(), header.getHeaderID());
        readDialog(header);
        readNegotiation(header);
        readSecurity(header);
        readOthers(header);
    }

    void readDialog(const KxSipHeader& header) {
        using Via = KxSipViaHeader;
        readAs<Via>(header, &Via::getProtocolName, &Via::getProtocolVersion, &Via::getTransport, &Via::getHost,
                    &Via::getPort, &Via::isPortPresent, &Via::getComment, &Via::getBranch, &Via::getMaddr,
                    &Via::getReceived, &Via::getTTL, &Via::isHiddenPresent, &Via::isRPortPresent,
                    &Via::getTransportParam);
        readAs<KxSipFromHeader>(header, &KxSipFromHeader::getTag, &KxSipFromHeader::isTagPresent);
        readAs<KxSipToHeader>(header, &KxSipToHeader::getTag, &KxSipToHeader::isTagPresent);
        readAs<KxSipContactHeader>(header, &KxSipContactHeader::isWildCard, &KxSipContactHeader::getDisplayName,
                                   &KxSipContactHeader::getExpires, &KxSipContactHeader::getComment);
        readAs<KxSipCSeqHeader>(header, &KxSipCSeqHeader::getSeqNumber, &KxSipCSeqHeader::getMethod);
        readAs<KxSipCallIdHeader>(header, &KxSipCallIdHeader::getCallId);
        readAs<KxSipRAckHeader>(header, &KxSipRAckHeader::getResponseNumber, &KxSipRAckHeader::getSeqNumber,
                                &KxSipRAckHeader::getMethod);
        readAs<KxSipRSeqHeader>(header, &KxSipRSeqHeader::getResponseNumber);
        readAs<KxSipReplacesHeader>(header, &KxSipReplacesHeader::getCallID, &KxSipReplacesHeader::getFromTag,
                                    &KxSipReplacesHeader::getToTag);
        readAs<KxSipRouteHeader>(header);
        readAs<KxSipRecordRouteHeader>(header);
        readAs<KxSipReferToHeader>(header, &KxSipReferToHeader::getURI);
        readAs<KxSipReferredByHeader>(header);
        readAs<KxSipCCDiversionHeader>(header, &KxSipCCDiversionHeader::getDisplayName);
        readAs<KxSipInReplyToHeader>(header, &KxSipInReplyToHeader::getCallId);
        readAs<KxSipMaxForwardsHeader>(header, &KxSipMaxForwardsHeader::getMaxForwards);
        readAs<KxSipSessionExpiresHeader>(
            header, &KxSipSessionExpiresHeader::getDeltaSeconds, &KxSipSessionExpiresHeader::getRefresher,
            &KxSipSessionExpiresHeader::isRefresherUAC, &KxSipSessionExpiresHeader::isRefresherUAS);
        readAs<KxSipMinSEHeader>(header, &KxSipMinSEHeader::getDeltaSeconds);
    }

    void readNegotiation(const KxSipHeader& header) {
        readAs<KxSipAcceptHeader>(header, &KxSipAcceptHeader::getType, &KxSipAcceptHeader::getSubType,
                                  &KxSipAcceptHeader::getMediaType);
        readAs<KxSipAcceptEncodingHeader>(header, &KxSipAcceptEncodingHeader::getContentEncoding);
        readAs<KxSipAcceptLanguageHeader>(header, &KxSipAcceptLanguageHeader::getLanguage);
        readAs<KxSipAllowHeader>(header, &KxSipAllowHeader::getMethod);
        readAs<KxSipAllowEventsHeader>(header, &KxSipAllowEventsHeader::getEvent);
        readAs<KxSipEventHeader>(header, &KxSipEventHeader::getEvent, &KxSipEventHeader::getId);
        readAs<KxSipContentDispositionHeader>(header, &KxSipContentDispositionHeader::getType,
                                              &KxSipContentDispositionHeader::getHandling);
        readAs<KxSipContentEncodingHeader>(header, &KxSipContentEncodingHeader::getContentEncoding);
        readAs<KxSipContentLengthHeader>(header, &KxSipContentLengthHeader::getContentLength);
        readAs<KxSipContentTypeHeader>(header, &KxSipContentTypeHeader::getType, &KxSipContentTypeHeader::getSubType,
                                       &KxSipContentTypeHeader::getMediaType);
        readAs<KxSipRequireHeader>(header, &KxSipRequireHeader::getOptionTag);
        readAs<KxSipProxyRequireHeader>(header, &KxSipProxyRequireHeader::getOptionTag);
        readAs<KxSipSupportedHeader>(header, &KxSipSupportedHeader::getOptionTag);
        readAs<KxSipUnsupportedHeader>(header, &KxSipUnsupportedHeader::getOptionTag);
        readAs<KxSipMIMEVersionHeader>(header, &KxSipMIMEVersionHeader::getVersionHigh,
                                       &KxSipMIMEVersionHeader::getVersionLow);
    }

    void readSecurity(const KxSipHeader& header) {
        using Authenticate = KxSipAuthenticateHeader;
        readAs<KxSipWWWAuthenticateHeader>(header, &Authenticate::getChallengeType, &Authenticate::getChallenge);
        readAs<KxSipProxyAuthenticateHeader>(header, &Authenticate::getChallengeType, &Authenticate::getChallenge);
        using Authorization = KxSipAuthorizationHeader;
        readAs<Authorization>(header, &Authorization::getAuthenticationType, &Authorization::getCredentials);
        readAs<KxSipProxyAuthorizationHeader>(header, &Authorization::getAuthenticationType,
                                              &Authorization::getCredentials);
        using Info = KxSipAuthenticationInfoHeader;
        readAs<Info>(header, &Info::getNextnonce, &Info::getRspauth, &Info::getQop, &Info::getNc, &Info::getCnonce);
    }

    void readOthers(const KxSipHeader& header) {
        readAs<KxSipAlertInfoHeader>(header, &KxSipAlertInfoHeader::getURI);
        readAs<KxSipErrorInfoHeader>(header, &KxSipErrorInfoHeader::getURI);
        readAs<KxSipDateHeader>(header, &KxSipDateHeader::getDate);
        readAs<KxSipExpiresHeader>(header, &KxSipExpiresHeader::isSipDate, &KxSipExpiresHeader::getDate,
                                   &KxSipExpiresHeader::getDeltaSeconds);
        readAs<KxSipMinExpiresHeader>(header, &KxSipMinExpiresHeader::getDeltaSeconds);
        readAs<KxSipOrganizationHeader>(header, &KxSipOrganizationHeader::getOrganization);
        readAs<KxSipPriorityHeader>(header, &KxSipPriorityHeader::getPriority);
        readAs<KxSipResponseKeyHeader>(header, &KxSipResponseKeyHeader::getScheme);
        readAs<KxSipRetryAfterHeader>(header, &KxSipRetryAfterHeader::getDeltaSeconds,
                                      &KxSipRetryAfterHeader::getComment, &KxSipRetryAfterHeader::getDuration,
                                      &KxSipRetryAfterHeader::getDurationInSeconds);
        readAs<KxSipServerHeader>(header, &KxSipServerHeader::getServer);
        readAs<KxSipSessionHeader>(header, &KxSipSessionHeader::getType);
        readAs<KxSipSubjectHeader>(header, &KxSipSubjectHeader::getSubject);
        readAs<KxSipTimestampHeader>(header, &KxSipTimestampHeader::getTimestamp, &KxSipTimestampHeader::getDelay,
                                     &KxSipTimestampHeader::getTimestampInMicroseconds,
                                     &KxSipTimestampHeader::getDelayInMicroseconds);
        readAs<KxSipUserAgentHeader>(header, &KxSipUserAgentHeader::getUserAgent);
        readAs<KxSipWarningHeader>(header, &KxSipWarningHeader::getCode, &KxSipWarningHeader::getAgent,
                                   &KxSipWarningHeader::getText);
        readAs<KxSipUnknownHeader>(header, &KxSipUnknownHeader::getValue);
    }

    std::string m_text;
};
