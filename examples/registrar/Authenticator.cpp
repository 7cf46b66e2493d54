#include "Authenticator.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/headers/KxSipAuthorizationHeader.h"
#include "sipobject/headers/KxSipWWWAuthenticateHeader.h"
#include "util/KxByteArrayInputStream.h"
#include "util/UUID.h"

#include <charconv>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::chrono::minutes kNonceLife{5};
// A flood of requests makes the oldest nonces expire early; their clients get "stale" and try again.
constexpr std::size_t kMaxNonces = 4096;

/** Returns the value of a nonce count of eight hexadecimal digits; 0, which is not a valid count, for any other
    text. */
std::uint32_t countOf(std::string_view digits) {
    std::uint32_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count, 16);
    return digits.size() == 8 && error == std::errc() && end == digits.data() + digits.size() ? count : 0;
}

/** Reads a URI; nil if it is none. */
KxHandle<KxURI> uriOf(const KxString& text) {
    try {
        KxByteArrayInputStream in(text.view());
        return KxURI::sConstructFrom(in, true);
    } catch (const KxHandle<KxException>&) {
        return {};
    }
}

/** Whether the text parses to the same URI; it may be written in a different way. */
bool names(const KxString& text, const KxHandle<KxURI>& uri) {
    const KxHandle<KxURI> named = uriOf(text);
    if (named.isNil() || uri.isNil()) {
        return false;
    }
    const bool areURLs = named->isSipURL() && uri->isSipURL();
    if (areURLs && KxSipGrammar::sComparesURLsByMeaning()) {
        return *named->as<KxSipURL>() == *uri->as<KxSipURL>();
    }
    return named->getString() == uri->getString();
}

/** Whether a property has this value, in any letter case if the grammar ignores it. */
bool is(const KxString& property, const char* value) {
    return KxSipGrammar::sKnowsDigestsByName() ? property.equalsNoCase(value) : property == value;
}

} // namespace

Users readUsers(const std::string& file) {
    std::ifstream in(file);
    Users users;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos || colon == 0 || colon + 1 == line.size() ||
            !users.emplace(line.substr(0, colon), line.substr(colon + 1)).second) {
            throw std::runtime_error(file + ", line " + std::to_string(number) +
                                     ": not user:password, or a user twice");
        }
    }
    if (!in.eof()) {
        throw std::runtime_error("cannot read " + file);
    }
    return users;
}

Authenticator::Authenticator(const std::string& realm, Users users)
    : m_realm(realm.c_str()), m_users(std::move(users)) {}

KxHandle<KxSipHeader> Authenticator::challenge(bool stale) {
    const Clock::time_point now = Clock::now();
    while (!m_order.empty() && (m_order.size() >= kMaxNonces || m_nonces[m_order.front()].end <= now)) {
        m_nonces.erase(m_order.front());
        m_order.pop_front();
    }
    char nonce[UUID::kTextLength + 1];
    UUID::uuid_create_string(nonce); // can't be guessed from earlier ones
    m_order.emplace_back(nonce);
    m_nonces[nonce].end = now + kNonceLife;

    const auto challenge = KxMake<KxSipDigestChallengeInfo>(m_realm);
    challenge->setProperty("nonce", KxString(nonce));
    if (stale) {
        challenge->setProperty("stale", KxString("TRUE"));
    }
    challenge->setProperty("algorithm", KxString("MD5"));
    challenge->setQopOptions(KxString("auth"));
    return KxMake<KxSipWWWAuthenticateHeader>(KxHandle<KxSipChallengeInfo>(challenge));
}

Authenticator::Verdict Authenticator::judge(const KxSipRequest& request) {
    // There may be several credentials, one for each realm on the path; a Proxy-Authorization is not for us.
    for (const KxSipAuthorizationHeader& header : request.values<KxSipAuthorizationHeader>()) {
        const auto credentials = header.getDigestCredentials();
        if (!credentials.isNil() && credentials->getRealm() == m_realm) {
            return judge(*credentials, request);
        }
    }
    return {};
}

/** Whether the credentials are of the offered kind and from a user who knows the password. */
bool Authenticator::isUser(KxSipDigestCredentialsInfo& credentials, const KxSipRequest& request) const {
    if (credentials.getProperty("algorithm").isNil()) { // means MD5 [RFC 2617 3.2.1]; the name is needed
        KxByteArrayInputStream usual("algorithm=MD5");
        credentials.parse(usual);
    }
    // The properties must be exactly those that were offered. With MD5-sess the password of some users would not be
    // needed, and without qop the same credentials could be replayed.
    if (!is(credentials.getProperty("algorithm"), "MD5") || !is(credentials.getProperty("qop"), "auth") ||
        !names(credentials.getProperty("uri"), request.getURI())) {
        return false;
    }
    // An unknown user takes as long as a known one, so that the time does not reveal user names.
    const KxString name = credentials.getUsername();
    const auto user = m_users.find(name.view());
    const KxString password = user == m_users.end() ? KxString() : KxString(user->second);
    credentials.setMethod(KxString(request.getMethod())); // not a property of the credentials
    return credentials.validate(name, password, m_realm) && user != m_users.end();
}

Authenticator::Verdict Authenticator::judge(KxSipDigestCredentialsInfo& credentials, const KxSipRequest& request) {
    Verdict verdict;
    if (!isUser(credentials, request)) {
        return verdict;
    }
    verdict.user = credentials.getUsername().view();
    verdict.outcome = Outcome::Stale;
    const auto found = m_nonces.find(std::string(credentials.getNonce().view()));
    if (found == m_nonces.end() || found->second.end <= Clock::now()) {
        return verdict;
    }
    Nonce& nonce = found->second;
    const std::uint32_t count = countOf(credentials.getProperty("nc"));
    const std::string transaction = std::string(credentials.getProperty("response")).append(request.createKey());
    if (count > nonce.count) {
        nonce.count = count;
        nonce.request = transaction;
        nonce.response.clear();
        verdict.outcome = Outcome::Accepted;
    } else if (count == nonce.count && transaction == nonce.request && !nonce.response.empty()) {
        verdict.outcome = Outcome::Repeated;
    }
    verdict.nonce = &nonce;
    return verdict;
}
