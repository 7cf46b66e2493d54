#include "sipobject/auth/KxSipDigestCredentialsInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/address/KxURI.h"
#include "sipobject/auth/KxSipAuthParamWriter.h"
#include "sipobject/auth/KxSipDigestFields.h"
#include "sipobject/auth/KxSipPropertyScanner.h"
#include "sipobject/auth/KxSipPropertyWriter.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxHexEncoding.h"

#include <algorithm>
#include <iterator>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipDigestCredentialsInfo"};

template <std::size_t kCount>
bool isAny(std::string_view name, const std::string_view (&names)[kCount]) {
    return std::any_of(std::begin(names), std::end(names), [name](std::string_view other) {
        return name.size() == other.size() && KxAscii::equalsNoCase(name, other);
    });
}

/** The properties by which the host tells what it knows. They are neither read nor written in the RFC grammar. */
bool isHidden(std::string_view name) {
    static constexpr std::string_view kHidden[] = {"password", "qopoptions", "method", "entity-body"};
    return isAny(name, kHidden);
}

/** The value, or an empty text for nil. */
const KxString& orEmpty(const KxString& value) {
    static constinit const KxConstString kNothing("");
    return value.isNil() ? static_cast<const KxString&>(kNothing) : value;
}

template <class Raw>
KxHandle<KxByteArray> arrayOf(const Raw& digest) {
    return KxByteArray::sCreate(sizeof digest.bytes, digest.bytes);
}

/** Whether the qop options of a challenge contain the option. [RFC 7616 3.3] */
bool offers(std::string_view options, std::string_view option) {
    if (!KxSipGrammar::sReadsQopOptionsAsList()) {
        return options.find(option) != std::string_view::npos;
    }
    for (std::size_t at = 0; at <= options.size();) {
        const std::size_t comma = std::min(options.find(',', at), options.size());
        if (KxAscii::equalsNoCase(KxAscii::trim(options.substr(at, comma - at)), option)) {
            return !option.empty();
        }
        at = comma + 1;
    }
    return false;
}

bool isPresent(std::string_view field) {
    return field.data() != nullptr;
}

/** Whether KxSipDigestFields has the property, as one that is written. */
bool isKnown(std::string_view name) {
    constexpr std::string_view kKnown[] = {"username",  "realm",  "nonce", "response", "uri",
                                           "algorithm", "opaque", "qop",   "nc",       "cnonce"};
    return isAny(name, kKnown);
}

/** Writes all properties that are present, but for those that are hidden. [RFC 7616 3.4] */
[[gnu::noinline]] void writeAll(KxOutputStream& out, const KxSipDigestFields& fields, const KxParameters& properties,
                                std::string_view response) {
    KxSipAuthParamWriter writer(out);
    std::size_t written = 0;
    const auto quoted = [&](std::string_view name, std::string_view value) __attribute__((always_inline)) {
        if (isPresent(value)) {
            writer.quoted(name, value);
            ++written;
        }
    };
    const auto bare = [&](std::string_view name, std::string_view value) __attribute__((always_inline)) {
        if (isPresent(value)) {
            writer.bare(name, value);
            ++written;
        }
    };
    quoted("username", fields.username);
    quoted("realm", fields.realm);
    quoted("nonce", fields.nonce);
    quoted("response", response);
    quoted("uri", fields.uri);
    bare("algorithm", fields.algorithm);
    quoted("opaque", fields.opaque);
    bare("qop", fields.qop);
    bare("nc", fields.nc);
    quoted("cnonce", fields.cnonce);
    if (written == properties.size() && isPresent(fields.received)) {
        return;
    }
    for (const KxParameters::Pair& property : properties) {
        if (!isKnown(property.name) && !isHidden(property.name)) {
            writer.byName(property.name, property.value);
        }
    }
}

} // namespace

constinit const KxConstString KxSipDigestCredentialsInfo::sm_Type{"Digest"};

bool KxSipDigestCredentialsInfo::sSupports(const KxString& algorithm) {
    const std::string_view name = algorithm.isNil() ? std::string_view() : algorithm.view();
    return KxSipDigestAlgorithm::sOf(name).isSupported();
}

bool KxSipDigestCredentialsInfo::sCanAnswer(const KxHandle<KxSipChallengeInfo>& challenge) {
    const auto digest = KxHandleCast<KxSipDigestChallengeInfo>(challenge);
    return !digest.isNil() && sSupports(digest->getAlgorithm());
}

KxSipDigestCredentialsInfo::KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge,
                                                       const KxString& username, const KxString& password) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo ctor");
    m_properties.setValue("realm", challenge->getRealm());
    m_properties.setValue("nonce", challenge->getNonce());
    const KxString algorithm = challenge->getAlgorithm();
    if (!sSupports(algorithm)) {
        KxSipDigestFields::sRefuseAlgorithm();
    }
    m_properties.setValue("algorithm", algorithm);
    m_properties.setValue("opaque", challenge->getOpaque());
    m_properties.setValue("qopoptions", challenge->getQopOptions());
    m_properties.setValue("username", username);
    m_properties.setValue("password", password);
}

KxSipDigestCredentialsInfo* KxSipDigestCredentialsInfo::clone() const {
    return new KxSipDigestCredentialsInfo(*this);
}

KxHandle<KxSipDigestCredentialsInfo> KxSipDigestCredentialsInfo::sCreateFrom(const KxHandle<KxByteArray>& properties) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::sCreateFrom");
    KxHandle<KxSipDigestCredentialsInfo> credentials = KxMake<KxSipDigestCredentialsInfo>();
    KxByteArrayInputStream in(properties);
    credentials->parse(in);
    return credentials;
}

void KxSipDigestCredentialsInfo::parse(KxInputStream& in) {
    read(in).raiseIfAny();
}

KxSipFault KxSipDigestCredentialsInfo::read(KxInputStream& in) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::parse");
    KxSipPropertyScanner::Options options = KxSipPropertyScanner::kStrict;
    options.isHidden = &isHidden;
    return KxSipPropertyScanner(m_properties, options).scan(in);
}

void KxSipDigestCredentialsInfo::serialize(KxOutputStream& out) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::serialize");
    const KxSipDigestFields fields(m_properties);
    const bool writesAll = KxSipGrammar::sWritesAuthParams();
    const auto write = [&](std::string_view response) {
        if (writesAll) [[unlikely]] {
            return writeAll(out, fields, m_properties, response);
        }
        KxSipPropertyWriter writer(out);
        writer.quoted(std::string_view("username"), fields.username);
        writer.quoted(std::string_view("realm"), fields.realm);
        writer.quoted(std::string_view("nonce"), fields.nonce);
        writer.quoted(std::string_view("response"), response);
        writer.quoted(std::string_view("uri"), fields.uri);
        if (isPresent(fields.algorithm)) {
            writer.bare(std::string_view("algorithm"), fields.algorithm);
        }
        if (isPresent(fields.opaque)) {
            writer.quoted(std::string_view("opaque"), fields.opaque);
        }
        if (isPresent(fields.qop)) { // in quotes, unlike in the RFC and in Authentication-Info
            writer.quoted(std::string_view("qop"), fields.qop);
            writer.bare(std::string_view("nc"), fields.nc);
            writer.quoted(std::string_view("cnonce"), fields.cnonce);
        }
    };
    // received credentials without a response stay as they are
    const bool isComplete = writesAll && !isPresent(fields.password) && !isPresent(fields.method);
    if (isPresent(fields.received) || isComplete) {
        write(fields.received);
    } else {
        fields.withDigests([&](const auto& digests) { write(KxSipDigestFields::Hex(digests.response()).view()); });
    }
}

bool KxSipDigestCredentialsInfo::validate(const KxString& username, const KxString& password, const KxString& realm) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::validate");
    m_properties.setValues({{KxString("username"), orEmpty(username)},
                            {KxString("password"), orEmpty(password)},
                            {KxString("realm"), orEmpty(realm)}});
    const KxSipDigestFields fields(m_properties);
    return fields.withDigests([&](const auto& digests) {
        return KxSipDigestFields::Hex(digests.response()).equalsInConstantTime(fields.received);
    });
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::generateA1() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::generateA1");
    const KxSipDigestFields fields(m_properties);
    return fields.withDigests([&](const auto& digests) { return arrayOf(digests.a1()); });
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::generateA2() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::generateA2");
    const KxSipDigestFields fields(m_properties);
    return fields.withDigests([&](const auto& digests) { return arrayOf(digests.a2()); });
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::getRequestDigest() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::getRequestDigest");
    const KxSipDigestFields fields(m_properties);
    return fields.withDigests([&](const auto& digests) { return arrayOf(digests.response()); });
}

const char* KxSipDigestCredentialsInfo::getType() const {
    return sm_Type.c_str();
}

KxString KxSipDigestCredentialsInfo::getUsername() const {
    return getProperty("username");
}

KxString KxSipDigestCredentialsInfo::getPassword() const {
    return getProperty("password");
}

KxString KxSipDigestCredentialsInfo::getRealm() const {
    return getProperty("realm");
}

void KxSipDigestCredentialsInfo::setUsername(const KxString& username) {
    set("username", username);
}

void KxSipDigestCredentialsInfo::setPassword(const KxString& password) {
    set("password", password);
}

void KxSipDigestCredentialsInfo::setDigestURI(const KxHandle<KxURI>& uri) {
    set("uri", uri.isNil() ? KxString() : uri->getString());
}

void KxSipDigestCredentialsInfo::setQop(const KxString& qop, const KxString& cnonce, std::int32_t nc) {
    const KxString* const options = m_properties.findValue("qopoptions");
    if (qop.isNil() || options == nullptr || !offers(*options, qop)) {
        return;
    }
    const auto count = static_cast<std::uint32_t>(nc);
    char bytes[4];
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        bytes[i] = static_cast<char>(count >> (24 - 8 * i));
    }
    char digits[2 * sizeof bytes];
    KxHexEncoding::toHex({bytes, sizeof bytes}, digits);
    m_properties.setValues({{KxString("qop"), qop},
                            {KxString("cnonce"), orEmpty(cnonce)},
                            {KxString("nc"), KxString(digits, sizeof digits)}});
}

void KxSipDigestCredentialsInfo::setEntityBody(const char* body) {
    setEntityBody(std::string_view(body == nullptr ? "" : body));
}

void KxSipDigestCredentialsInfo::setEntityBody(std::string_view body) {
    const bool isDigested = !body.empty() || KxSipGrammar::sDigestsEmptyBody();
    const KxString digest = KxSipDigestFields(m_properties).withDigests([&](const auto& digests) {
        return isDigested ? KxString(KxSipDigestFields::Hex(digests.ofBody(body)).view()) : KxString();
    });
    set("entity-body", digest);
}

void KxSipDigestCredentialsInfo::set(std::string_view name, const KxString& value) {
    m_properties.setValue(name, orEmpty(value));
}
