#include "tools/kxsip/HeaderFields.h"

#include "sipheaders/KxSipHeaders.h"
#include "sipobject/KxSipObject.h"
#include "tools/kxsip/JsonWriter.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Origin.h"

#include <algorithm>
#include <array>
#include <functional>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>

namespace {

void writeText(const char* key, std::string_view text, JsonWriter& json) {
    if (!text.empty()) {
        json.key(key).text(text);
    }
}

void writeList(const char* key, const KxParameters& list, JsonWriter& json) {
    if (list.empty()) {
        return;
    }
    json.key(key).begin();
    for (const KxParameters::Pair& pair : list) {
        json.key(pair.name).text(pair.value.view().starts_with('"') ? KxSipParameterValue::sText(pair.value)
                                                                    : pair.value);
    }
    json.end();
}

template <class H>
void writeParameters(const H& header, JsonWriter& json) {
    if constexpr (requires { header.getParameters(); }) {
        writeList("parameters", *header.getParameters(), json);
    }
}

void writeSipURL(const KxSipURL& url, JsonWriter& json) {
    json.key("scheme").text(url.isSecure() ? "sips" : "sip");
    writeText("user", url.getUser(), json);
    json.key("host").text(url.getHost());
    if (url.hasPort()) {
        json.key("port").number(url.getPort());
    }
    writeList("uri_parameters", *url.getParameters(), json);
    if (url.hasHeaders()) {
        writeList("uri_headers", *url.getHeaders(), json);
    }
}

void writeURI(const KxHandle<KxURI>& uri, JsonWriter& json) {
    if (uri.isNil()) {
        return;
    }
    json.key("uri").serialized(*uri);
    if (uri->isSipURL()) {
        writeSipURL(static_cast<const KxSipURL&>(*uri), json);
        return;
    }
    writeText("scheme", uri->getScheme(), json);
    if (const auto* const tel = uri->as<KxTelURL>()) {
        writeText("number", tel->getPhoneNumber() == nullptr ? "" : tel->getPhoneNumber(), json);
        writeList("uri_parameters", *tel->getParameters(), json);
    }
}

// The families. Each function writes the parts of a header of class H.

template <class H>
void writeAddress(const H& header, const char*, JsonWriter& json) {
    bool isWildCard = false;
    if constexpr (requires { header.isWildCard(); }) {
        isWildCard = header.isWildCard();
    }
    if (isWildCard) {
        json.key("wildcard").truth(true);
    } else if (const KxHandle<KxSipNameAddress>& address = header.getNameAddress(); !address.isNil()) {
        writeText("display_name", KxSipParameterValue::sText(address->getDisplayName()), json);
        writeURI(address->getURI(), json);
    }
    writeParameters(header, json);
}

template <class H>
void writeBareURI(const H& header, const char*, JsonWriter& json) {
    writeURI(header.getURI(), json);
    writeParameters(header, json);
}

/** The first part is what Get returns. */
template <class H, auto Get>
void writeToken(const H& header, const char* key, JsonWriter& json) {
    writeText(key, std::string_view(std::invoke(Get, header)), json);
    writeParameters(header, json);
}

template <class H, auto Get>
void writeNumber(const H& header, const char* key, JsonWriter& json) {
    bool isText = false;
    if constexpr (requires { header.getText(); }) {
        isText = !header.getText().empty();
    }
    if (!isText) {
        json.key(key).number(std::invoke(Get, header));
    }
    if constexpr (requires { header.getComment(); }) {
        writeText("comment", header.getComment(), json);
    }
    writeParameters(header, json);
}

template <class H>
void writeMediaType(const H& header, const char*, JsonWriter& json) {
    writeText("type", header.getType(), json);
    writeText("subtype", header.getSubType(), json);
    writeParameters(header, json);
}

template <class H>
void writeOnlyParameters(const H& header, const char*, JsonWriter& json) {
    writeParameters(header, json);
}

template <class H>
void writeResource(const H& header, const char*, JsonWriter& json) {
    json.key("namespace").text(header.getNamespace());
    json.key("priority").text(header.getPriority());
}

template <class Info>
void writeDigest(const Info& info, JsonWriter& json) {
    json.key("parameters").begin();
    for (const char* const name : {"username", "realm", "domain", "nonce", "uri", "response", "algorithm", "qop",
                                   "cnonce", "nc", "opaque", "stale"}) {
        if (const KxString value = info.getProperty(name); !value.isNil()) {
            json.key(name).text(value);
        }
    }
    json.end();
}

template <class H>
void writeChallenge(const H& header, const char*, JsonWriter& json) {
    if (!header.getChallenge().isNil()) {
        json.key("scheme").text(header.getChallengeType());
    }
    if (const auto digest = header.getDigestChallenge(); !digest.isNil()) {
        writeDigest(*digest, json);
    }
}

template <class H>
void writeCredentials(const H& header, const char*, JsonWriter& json) {
    if (!header.getCredentials().isNil()) {
        json.key("scheme").text(header.getAuthenticationType());
    }
    if (const auto digest = header.getDigestCredentials(); !digest.isNil()) {
        writeDigest(*digest, json);
    }
}

// Headers that are in no family.

void writeVia(const KxSipViaHeader& via, const char*, JsonWriter& json) {
    json.key("transport").text(via.getTransport());
    json.key("host").text(via.getHost());
    if (via.isPortPresent()) {
        json.key("port").number(via.getPort());
    }
    constexpr std::array<std::string_view, 3> kOwnKeys = {"branch", "received", "rport"};
    KxParameters others;
    for (const KxParameters::Pair& pair : *via.getParameters()) {
        const auto own = std::find_if(kOwnKeys.begin(), kOwnKeys.end(),
                                      [&pair](std::string_view key) { return pair.name.equalsNoCase(key); });
        if (own != kOwnKeys.end()) {
            json.key(*own).text(pair.value);
        } else {
            others.setValue(pair.name, pair.value);
        }
    }
    writeList("parameters", others, json);
}

void writeCSeq(const KxSipCSeqHeader& cseq, const char*, JsonWriter& json) {
    json.key("number").number(cseq.getSeqNumber());
    json.key("method").text(cseq.getMethod());
}

void writeRAck(const KxSipRAckHeader& rack, const char*, JsonWriter& json) {
    json.key("response_number").number(rack.getResponseNumber());
    json.key("number").number(rack.getSeqNumber());
    json.key("method").text(rack.getMethod());
}

void writeReplaces(const KxSipReplacesHeader& replaces, const char*, JsonWriter& json) {
    json.key("call_id").text(replaces.getCallID());
    writeText("from_tag", replaces.getFromTag(), json);
    writeText("to_tag", replaces.getToTag(), json);
    json.key("early_only").truth(replaces.isEarlyOnly());
}

void writeWarning(const KxSipWarningHeader& warning, const char*, JsonWriter& json) {
    json.key("code").number(warning.getCode());
    writeText("agent", warning.getAgent(), json);
    writeText("text", warning.getText(), json);
}

void writeTimestamp(const KxSipTimestampHeader& timestamp, const char*, JsonWriter& json) {
    json.key("timestamp").text(timestamp.getTimestamp());
    writeText("delay", timestamp.getDelay(), json);
}

void writeMIMEVersion(const KxSipMIMEVersionHeader& version, const char*, JsonWriter& json) {
    json.key("major").number(version.getVersionHigh());
    json.key("minor").number(version.getVersionLow());
}

void writeDate(const KxDate& date, JsonWriter& json) {
    if (date.isValid()) {
        json.key("time").text(utcText(std::chrono::seconds(date.getSeconds())));
    }
}

void writeDateHeader(const KxSipDateHeader& header, const char*, JsonWriter& json) {
    writeDate(header.getDate(), json);
}

void writeExpires(const KxSipExpiresHeader& expires, const char*, JsonWriter& json) {
    if (expires.isSipDate()) {
        writeDate(expires.getDate(), json);
    } else {
        json.key("seconds").number(expires.getDeltaSeconds());
    }
}

void writePrivacy(const KxSipPrivacyHeader& privacy, const char*, JsonWriter& json) {
    json.key("values").beginArray();
    for (const KxString& value : privacy.getValues()) {
        json.text(value);
    }
    json.endArray();
}

using Table = std::unordered_map<std::type_index, std::pair<HeaderFields::Write, const char*>>;

template <class H, void (*WriteParts)(const H&, const char*, JsonWriter&)>
void add(Table& table, const char* key = nullptr) {
    const HeaderFields::Write write = [](const KxSipHeader& header, const char* first, JsonWriter& json) {
        WriteParts(static_cast<const H&>(header), first, json);
    };
    table.emplace(typeid(H), std::pair(write, key));
}

template <class... H>
void addAddresses(Table& table) {
    (add<H, writeAddress<H>>(table), ...);
}

template <class... H>
void addBareURIs(Table& table) {
    (add<H, writeBareURI<H>>(table), ...);
}

template <class... H>
void addOnlyParameters(Table& table) {
    (add<H, writeOnlyParameters<H>>(table), ...);
}

template <class... H>
void addOptionTags(Table& table) {
    (add<H, writeToken<H, &H::getOptionTag>>(table, "option_tag"), ...);
}

template <class... H>
void addMechanisms(Table& table) {
    (add<H, writeToken<H, &H::getMechanism>>(table, "mechanism"), ...);
}

template <class H, auto Get>
void addToken(Table& table, const char* key) {
    add<H, writeToken<H, Get>>(table, key);
}

template <class H, auto Get>
void addNumber(Table& table, const char* key) {
    add<H, writeNumber<H, Get>>(table, key);
}

void addTokens(Table& table) {
    addOptionTags<KxSipRequireHeader, KxSipProxyRequireHeader, KxSipSupportedHeader, KxSipUnsupportedHeader>(table);
    addMechanisms<KxSipSecurityClientHeader, KxSipSecurityServerHeader, KxSipSecurityVerifyHeader>(table);
    addToken<KxSipAcceptEncodingHeader, &KxSipAcceptEncodingHeader::getContentEncoding>(table, "coding");
    addToken<KxSipAcceptLanguageHeader, &KxSipAcceptLanguageHeader::getLanguage>(table, "language");
    addToken<KxSipAllowHeader, &KxSipAllowHeader::getMethod>(table, "method");
    addToken<KxSipAllowEventsHeader, &KxSipAllowEventsHeader::getEvent>(table, "event");
    addToken<KxSipContentDispositionHeader, &KxSipContentDispositionHeader::getType>(table, "type");
    addToken<KxSipContentEncodingHeader, &KxSipContentEncodingHeader::getContentEncoding>(table, "coding");
    addToken<KxSipEventHeader, &KxSipEventHeader::getEvent>(table, "event");
    addToken<KxSipIdentityHeader, &KxSipIdentityHeader::getPassport>(table, "passport");
    addToken<KxSipInReplyToHeader, &KxSipInReplyToHeader::getCallId>(table, "call_id");
    addToken<KxSipPAccessNetworkInfoHeader, &KxSipPAccessNetworkInfoHeader::getAccessType>(table, "access_type");
    addToken<KxSipPEarlyMediaHeader, &KxSipPEarlyMediaHeader::getEMParam>(table, "parameter");
    addToken<KxSipPriorityHeader, &KxSipPriorityHeader::getPriority>(table, "priority");
    addToken<KxSipReasonHeader, &KxSipReasonHeader::getProtocol>(table, "protocol");
    addToken<KxSipReferSubHeader, &KxSipReferSubHeader::getValue>(table, "value");
    addToken<KxSipRequestDispositionHeader, &KxSipRequestDispositionHeader::getDirective>(table, "directive");
    addToken<KxSipResponseKeyHeader, &KxSipResponseKeyHeader::getScheme>(table, "scheme");
    addToken<KxSipSIPETagHeader, &KxSipSIPETagHeader::getEntityTag>(table, "entity_tag");
    addToken<KxSipSIPIfMatchHeader, &KxSipSIPIfMatchHeader::getEntityTag>(table, "entity_tag");
    addToken<KxSipSessionHeader, &KxSipSessionHeader::getType>(table, "type");
    addToken<KxSipSessionIDHeader, &KxSipSessionIDHeader::getLocalUUID>(table, "local");
    addToken<KxSipSubscriptionStateHeader, &KxSipSubscriptionStateHeader::getState>(table, "state");
    addToken<KxSipUserToUserHeader, &KxSipUserToUserHeader::getData>(table, "data");
}

void addNumbers(Table& table) {
    addNumber<KxSipContentLengthHeader, &KxSipContentLengthHeader::getContentLength>(table, "length");
    addNumber<KxSipMaxBreadthHeader, &KxSipMaxBreadthHeader::getMaxBreadth>(table, "branches");
    addNumber<KxSipMaxForwardsHeader, &KxSipMaxForwardsHeader::getMaxForwards>(table, "hops");
    addNumber<KxSipMinExpiresHeader, &KxSipMinExpiresHeader::getDeltaSeconds>(table, "seconds");
    addNumber<KxSipMinSEHeader, &KxSipMinSEHeader::getDeltaSeconds>(table, "seconds");
    addNumber<KxSipRSeqHeader, &KxSipRSeqHeader::getResponseNumber>(table, "response_number");
    addNumber<KxSipRetryAfterHeader, &KxSipRetryAfterHeader::getDeltaSeconds>(table, "seconds");
    addNumber<KxSipSessionExpiresHeader, &KxSipSessionExpiresHeader::getDeltaSeconds>(table, "seconds");
}

void addOthers(Table& table) {
    add<KxSipAcceptHeader, writeMediaType<KxSipAcceptHeader>>(table);
    add<KxSipContentTypeHeader, writeMediaType<KxSipContentTypeHeader>>(table);
    add<KxSipAcceptResourcePriorityHeader, writeResource<KxSipAcceptResourcePriorityHeader>>(table);
    add<KxSipResourcePriorityHeader, writeResource<KxSipResourcePriorityHeader>>(table);
    add<KxSipWWWAuthenticateHeader, writeChallenge<KxSipWWWAuthenticateHeader>>(table);
    add<KxSipProxyAuthenticateHeader, writeChallenge<KxSipProxyAuthenticateHeader>>(table);
    add<KxSipAuthorizationHeader, writeCredentials<KxSipAuthorizationHeader>>(table);
    add<KxSipProxyAuthorizationHeader, writeCredentials<KxSipProxyAuthorizationHeader>>(table);
    add<KxSipViaHeader, writeVia>(table);
    add<KxSipCSeqHeader, writeCSeq>(table);
    add<KxSipRAckHeader, writeRAck>(table);
    add<KxSipReplacesHeader, writeReplaces>(table);
    add<KxSipWarningHeader, writeWarning>(table);
    add<KxSipTimestampHeader, writeTimestamp>(table);
    add<KxSipMIMEVersionHeader, writeMIMEVersion>(table);
    add<KxSipDateHeader, writeDateHeader>(table);
    add<KxSipExpiresHeader, writeExpires>(table);
    add<KxSipPrivacyHeader, writePrivacy>(table);
}

Table makeTable() {
    Table table;
    addAddresses<KxSipFromHeader, KxSipToHeader, KxSipContactHeader, KxSipRouteHeader, KxSipRecordRouteHeader,
                 KxSipReferToHeader, KxSipReferredByHeader, KxSipCCDiversionHeader, KxSipDiversionHeader,
                 KxSipGeolocationHeader, KxSipHistoryInfoHeader, KxSipPAssertedIdentityHeader,
                 KxSipPAssociatedURIHeader, KxSipPCalledPartyIDHeader, KxSipPPreferredIdentityHeader, KxSipPathHeader,
                 KxSipRemotePartyIDHeader, KxSipReplyToHeader, KxSipServiceRouteHeader>(table);
    addBareURIs<KxSipAlertInfoHeader, KxSipCallInfoHeader, KxSipErrorInfoHeader>(table);
    addOnlyParameters<KxSipAcceptContactHeader, KxSipRejectContactHeader, KxSipPChargingVectorHeader,
                      KxSipAuthenticationInfoHeader>(table);
    addTokens(table);
    addNumbers(table);
    addOthers(table);
    return table;
}

} // namespace

const HeaderFields& HeaderFields::sOf(const KxSipHeader& header) {
    static const Table s_table = makeTable();
    static std::unordered_map<const std::type_info*, HeaderFields> s_known;
    const std::type_info& type = typeid(header);
    const auto [known, isNew] = s_known.try_emplace(&type);
    if (isNew) {
        known->second.className = classNameOf(header);
        if (const auto row = s_table.find(type); row != s_table.end()) {
            known->second.writeThem = row->second.first;
            known->second.key = row->second.second;
        }
    }
    return known->second;
}
