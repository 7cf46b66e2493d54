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

#include <initializer_list>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipDigestCredentialsInfo"};

/** The hexadecimal text of a digest. */
class Hex {
public:
    explicit Hex(const MD5::Raw& digest) { KxHexEncoding::toHex(digest.view(), m_digits); }
    std::string_view view() const { return {m_digits, sizeof m_digits}; }

    /** As ==, but looks at every digit whatever the others are. */
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

using Texts = std::initializer_list<std::string_view>;

MD5::Raw digestOf(Texts texts) {
    MD5 sum;
    for (const std::string_view text : texts) {
        sum.update(text);
    }
    return sum.finish();
}

/** The digest of the texts up to their first zero byte, wherever it stands. */
MD5::Raw digestUpToZero(Texts texts) {
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

KxHandle<KxByteArray> arrayOf(const MD5::Raw& digest) {
    return KxByteArray::sCreate(sizeof digest.bytes, digest.bytes);
}

bool isSupported(std::string_view algorithm) {
    return algorithm.substr(0, 3) == "MD5";
}

[[noreturn]] void refuseAlgorithm() {
    KxException::sThrow("Unsupported Algorithm: Only MD5 is supported !!!");
}

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
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::parse");
    KxSipPropertyScanner(m_properties, KxSipPropertyScanner::kStrict).scan(in);
}

void KxSipDigestCredentialsInfo::serialize(KxOutputStream& out) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::serialize");
    const KxString* const response = m_properties.findValue("response");
    KxSipPropertyWriter writer(out);
    const auto quoted = [&](std::string_view name) { writer.quoted(name, text(name)); };
    const auto bare = [&](std::string_view name) { writer.bare(name, text(name)); };
    const auto writeFront = [&](std::string_view digits) {
        quoted("username");
        quoted("realm");
        quoted("nonce");
        writer.quoted("response", digits);
        quoted("uri");
    };
    response != nullptr ? writeFront(*response) : writeFront(Hex(requestDigest()).view());
    if (m_properties.isPresent("algorithm")) {
        bare("algorithm");
    }
    if (m_properties.isPresent("opaque")) {
        quoted("opaque");
    }
    if (m_properties.isPresent("qop")) { // in quotes, other than the RFC would have it and Authentication-Info does
        quoted("qop");
        bare("nc");
        quoted("cnonce");
    }
}

bool KxSipDigestCredentialsInfo::validate(const KxString& username, const KxString& password, const KxString& realm) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::validate");
    setUsername(username);
    setPassword(password);
    set("realm", realm);
    return Hex(requestDigest()).equalsInConstantTime(text("response"));
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::generateA1() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::generateA1");
    checkAlgorithm();
    return arrayOf(digestA1());
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::generateA2() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::generateA2");
    checkAlgorithm();
    return arrayOf(digestA2(text("qop")));
}

KxHandle<KxByteArray> KxSipDigestCredentialsInfo::getRequestDigest() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestCredentialsInfo::getRequestDigest");
    return arrayOf(requestDigest());
}

MD5::Raw KxSipDigestCredentialsInfo::digestA1() const {
    const MD5::Raw digest = digestOf({text("username"), ":", text("realm"), ":", text("password")});
    if (text("algorithm") != "MD5-sess") {
        return digest;
    }
    return digestUpToZero({digest.view(), ":", text("nonce"), ":", text("cnonce")});
}

MD5::Raw KxSipDigestCredentialsInfo::digestA2(std::string_view qop) const {
    if (qop == "auth-int") {
        return digestOf({text("method"), ":", text("uri"), ":", text("entity-body")});
    }
    return digestOf({text("method"), ":", text("uri")});
}

MD5::Raw KxSipDigestCredentialsInfo::requestDigest() const {
    checkAlgorithm();
    const std::string_view qop = text("qop");
    const std::string_view nonce = text("nonce");
    const Hex a1(digestA1());
    const Hex a2(digestA2(qop));
    if (qop == "auth" || qop == "auth-int") {
        return digestOf({a1.view(), ":", nonce, ":", text("nc"), ":", text("cnonce"), ":", qop, ":", a2.view()});
    }
    return digestOf({a1.view(), ":", nonce, ":", a2.view()});
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
    set("qop", qop);
    set("cnonce", cnonce);
    set("nc", KxString(digits, sizeof digits));
}

void KxSipDigestCredentialsInfo::setEntityBody(const char* body) {
    checkAlgorithm();
    const std::string_view bytes(body == nullptr ? "" : body);
    set("entity-body", bytes.empty() ? KxString() : KxString(Hex(MD5::digestOf(bytes)).view()));
}

std::string_view KxSipDigestCredentialsInfo::text(std::string_view name) const {
    const KxString* const value = m_properties.findValue(name);
    return value == nullptr ? std::string_view() : value->view();
}

void KxSipDigestCredentialsInfo::set(std::string_view name, const KxString& value) {
    static constinit const KxConstString kNothing("");
    m_properties.setValue(name, value.isNil() ? kNothing : value);
}

void KxSipDigestCredentialsInfo::checkAlgorithm() const {
    if (!isSupported(text("algorithm"))) {
        refuseAlgorithm();
    }
}
