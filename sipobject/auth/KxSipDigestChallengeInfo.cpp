#include "sipobject/auth/KxSipDigestChallengeInfo.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/auth/KxSipAuthParamWriter.h"
#include "sipobject/auth/KxSipPropertyScanner.h"
#include "sipobject/auth/KxSipPropertyWriter.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxBytes.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace {

constexpr const char* kName = "KxSipDigestChallengeInfo";
constinit Oskan::AceCleanupLogger s_logger{kName};

bool isBare(const KxString& name) {
    constexpr std::string_view kBare[] = {"algorithm", "stale", "uri"};
    return std::any_of(std::begin(kBare), std::end(kBare), [&name](std::string_view bare) {
        return name.length() == bare.size() &&
               (KxBytes::equal(name.c_str(), bare.data(), bare.size()) || name.equalsNoCase(bare));
    });
}

void writeAll(KxOutputStream& out, const KxParameters& properties) {
    KxSipAuthParamWriter writer(out);
    for (const KxParameters::Pair& property : properties) {
        writer.byName(property.name, property.value);
    }
}

} // namespace

constinit const KxConstString KxSipDigestChallengeInfo::TYPE{"Digest"};

KxSipDigestChallengeInfo::KxSipDigestChallengeInfo(const KxString& realm) {
    setProperty("realm", realm);
}

KxSipDigestChallengeInfo* KxSipDigestChallengeInfo::clone() const {
    return new KxSipDigestChallengeInfo(*this);
}

KxHandle<KxSipDigestChallengeInfo> KxSipDigestChallengeInfo::sCreateFrom(const KxHandle<KxByteArray>& properties) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestChallengeInfo::sCreateFrom");
    KxHandle<KxSipDigestChallengeInfo> challenge = KxMake<KxSipDigestChallengeInfo>();
    KxByteArrayInputStream in(properties);
    challenge->parse(in);
    return challenge;
}

void KxSipDigestChallengeInfo::parse(KxInputStream& in) {
    read(in).raiseIfAny();
}

KxSipFault KxSipDigestChallengeInfo::read(KxInputStream& in) {
    constexpr const char* kOperation = "KxSipDigestChallengeInfo::parse";
    const Oskan::EntryTraceScope trace(s_logger, kOperation);
    KxSipPropertyScanner scanner(m_properties, KxSipPropertyScanner::kStrict);
    const KxSipFault fault = scanner.scan(in);
    if (scanner.reachedEnd() && s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug,
                     std::string(kOperation)
                         .append(" : prop.size()=")
                         .append(std::to_string(m_properties.size()))
                         .append(",prop.getString()=")
                         .append(m_properties.getString().view()),
                     kName);
    }
    return fault;
}

void KxSipDigestChallengeInfo::serialize(KxOutputStream& out) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipDigestChallengeInfo::serialize");
    if (KxSipGrammar::sWritesAuthParams()) {
        return writeAll(out, m_properties);
    }
    KxSipPropertyWriter writer(out);
    for (const KxParameters::Pair& property : m_properties) {
        if (isBare(property.name)) {
            writer.bare(property.name, property.value);
        } else {
            writer.quoted(property.name, property.value);
        }
    }
}

KxString KxSipDigestChallengeInfo::getType() const {
    return TYPE;
}

KxString KxSipDigestChallengeInfo::getRealm() const {
    return getProperty("realm");
}
