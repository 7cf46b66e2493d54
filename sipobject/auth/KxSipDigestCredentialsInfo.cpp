#include "sipobject/auth/KxSipDigestCredentialsInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/address/KxURI.h"
#include "sipobject/auth/KxSipPropertyScanner.h"
#include "sipobject/auth/KxSipPropertyWriter.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxBytes.h"
#include "util/KxException.h"
#include "util/KxHexEncoding.h"
#include "util/MD5.h"

#include <initializer_list>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipDigestCredentialsInfo"};

/** The hexadecimal text of a digest. */
class Hex {
public:
    explicit Hex(const MD5::Raw& digest) { KxHexEncoding::toHex(digest.view(), m_digits); }
    std::string_view view() const { return {m_digits, sizeof m_digits}; }

    /** As ==, but compares all digits even after a difference. */
    bool equalsInConstantTime(std::string_view other) const {
        if (other.size() != sizeof m_digits) {
            return false;
        }
        std::uint64_t difference = 0;
        for (std::size_t at = 0; at < sizeof m_digits; at += sizeof difference) {
            difference |= KxBytes::load<std::uint64_t>(m_digits + at) ^ KxBytes::load<std::uint64_t>(other.data() + at);
        }
        return difference == 0;
    }

private:
    char m_digits[2 * sizeof(MD5::Raw)];
};

/** The value, or an empty text for nil. */
const KxString& orEmpty(const KxString& value) {
    static constinit const KxConstString kNothing("");
    return value.isNil() ? static_cast<const KxString&>(kNothing) : value;
}

KxHandle<KxByteArray> arrayOf(const MD5::Raw& digest) {
    return KxByteArray::sCreate(sizeof digest.bytes, digest.bytes);
}

bool isSupported(std::string_view algorithm) {
    return algorithm.substr(0, 3) == "MD5";
}

[[noreturn]] void refuseAlgorithm() {
    KxException::sThrow("Unsupported Algorithm: Only MD5 is supported !!!");
}

template <class... Texts>
MD5::Raw digestOf(const Texts&... texts) {
    MD5 sum;
    (sum.update(texts), ...);
    return sum.finish();
}

/** The digest of the joined texts up to the first zero byte in any of them. */
MD5::Raw digestUpToZero(std::initializer_list<std::string_view> texts) {
    MD5 sum;
    for (const std::string_view text : texts) {
        const std::string_view head = text.substr(0, text.find('\0'));
        sum.update(head);
        if (head.size() != text.size()) {
            break;
        }
    }
    return sum.finish();
}

/** The properties that are used for computing or written, found in one pass. An absent property has null data. */
struct Fields {
    explicit Fields(const KxParameters& properties) {
        for (const KxParameters::Pair& property : properties) {
            take(property);
        }
    }

    void checkAlgorithm() const {
        if (!isSupported(algorithm)) {
            refuseAlgorithm();
        }
    }
    MD5::Raw a1() const {
        const MD5::Raw digest = digestOf(username, ":", realm, ":", password);
        return algorithm == "MD5-sess" ? digestUpToZero({digest.view(), ":", nonce, ":", cnonce}) : digest;
    }
    MD5::Raw a2() const {
        return qop == "auth-int" ? digestOf(method, ":", uri, ":", entityBody) : digestOf(method, ":", uri);
    }
    MD5::Raw response() const {
        checkAlgorithm();
        const Hex first(a1());
        const Hex second(a2());
        if (qop == "auth" || qop == "auth-int") {
            return digestOf(first.view(), ":", nonce, ":", nc, ":", cnonce, ":", qop, ":", second.view());
        }
        return digestOf(first.view(), ":", nonce, ":", second.view());
    }

    std::string_view username;
    std::string_view realm;
    std::string_view password;
    std::string_view nonce;
    std::string_view algorithm;
    std::string_view opaque;
    std::string_view method;
    std::string_view uri;
    std::string_view qop;
    std::string_view cnonce;
    std::string_view nc;
    std::string_view entityBody;
    std::string_view received; ///< The received response.

private:
    void take(const KxParameters::Pair& property) {
        const std::string_view name = property.name;
        const KxBytes::Ends ends = KxBytes::Ends(name.data(), name.size()).folded();
        const auto takeAs = [&](const auto& known, std::string_view& field) {
            constexpr std::size_t kLength = sizeof known - 1;
            // Ends covers all of a name of up to eight letters, so equal ends mean an equal name
            const bool matches =
                ends == KxBytes::Ends(known, kLength).folded() && (kLength <= 8 || KxAscii::equalsNoCase(name, known));
            if (matches) {
                field = property.value;
            }
            return matches;
        };
        switch (name.size()) { // compare only with the names of that length
        case 2:
            takeAs("nc", nc);
            break;
        case 3:
            takeAs("uri", uri) || takeAs("qop", qop);
            break;
        case 5:
            takeAs("realm", realm) || takeAs("nonce", nonce);
            break;
        case 6:
            takeAs("opaque", opaque) || takeAs("cnonce", cnonce) || takeAs("method", method);
            break;
        case 8:
            takeAs("username", username) || takeAs("response", received) || takeAs("password", password);
            break;
        case 9:
            takeAs("algorithm", algorithm);
            break;
        case 11:
            takeAs("entity-body", entityBody);
            break;
        default:
            break;
        }
    }
};

} // namespace

constinit const KxConstString KxSipDigestCredentialsInfo::sm_Type{"Digest"};

KxSipDigestCredentialsInfo::KxSipDigestCredentialsInfo(const KxHandle<KxSipDigestChallengeInfo>& challenge,
                                                       const KxString& username, const KxString& password) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo ctor");
    m_properties.setValue("realm", challenge->getRealm());
    m_properties.setValue("nonce", challenge->getNonce());
    const KxString algorithm = challenge->getAlgorithm();
    if (!isSupported(algorithm)) {
        refuseAlgorithm();
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
    return KxSipPropertyScanner(m_properties, KxSipPropertyScanner::kStrict).scan(in);
}

void KxSipDigestCredentialsInfo::serialize(KxOutputStream& out) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::serialize");
    const Fields fields(m_properties);
    const auto isPresent = [](std::string_view field) { return field.data() != nullptr; };
    const auto write = [&](std::string_view response) {
        KxSipPropertyWriter writer(out);
        writer.quoted("username", fields.username);
        writer.quoted("realm", fields.realm);
        writer.quoted("nonce", fields.nonce);
        writer.quoted("response", response);
        writer.quoted("uri", fields.uri);
        if (isPresent(fields.algorithm)) {
            writer.bare("algorithm", fields.algorithm);
        }
        if (isPresent(fields.opaque)) {
            writer.quoted("opaque", fields.opaque);
        }
        if (isPresent(fields.qop)) { // in quotes, unlike in the RFC and in Authentication-Info
            writer.quoted("qop", fields.qop);
            writer.bare("nc", fields.nc);
            writer.quoted("cnonce", fields.cnonce);
        }
    };
    isPresent(fields.received) ? write(fields.received) : write(Hex(fields.response()).view());
}

bool KxSipDigestCredentialsInfo::validate(const KxString& username, const KxString& password, const KxString& realm) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::validate");
    m_properties.setValues({{KxString("username"), orEmpty(username)},
                            {KxString("password"), orEmpty(password)},
                            {KxString("realm"), orEmpty(realm)}});
    const Fields fields(m_properties);
    return Hex(fields.response()).equalsInConstantTime(fields.received);
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::generateA1() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::generateA1");
    const Fields fields(m_properties);
    fields.checkAlgorithm();
    return arrayOf(fields.a1());
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::generateA2() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::generateA2");
    const Fields fields(m_properties);
    fields.checkAlgorithm();
    return arrayOf(fields.a2());
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::getRequestDigest() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::getRequestDigest");
    return arrayOf(Fields(m_properties).response());
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
    if (qop.isNil() || options == nullptr || options->view().find(qop.view()) == std::string_view::npos) {
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
    Fields(m_properties).checkAlgorithm();
    set("entity-body", body.empty() ? KxString() : KxString(Hex(MD5::digestOf(body)).view()));
}

void KxSipDigestCredentialsInfo::set(std::string_view name, const KxString& value) {
    m_properties.setValue(name, orEmpty(value));
}
