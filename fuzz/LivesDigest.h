#pragma once

#include "fuzz/LivesProgram.h"
#include "fuzz/LivesSteps.h"
#include "sipobject/KxSipObject.h"

/** A server challenges a request, the client answers, and the server checks the answer, all by what was written. */
class LivesDigest {
public:
    LivesDigest(KxSipRequest& request, const LivesProgram& program, const LivesStep& step)
        : m_request(request),
          m_realm(program.text(step.argument)),
          m_user(program.text(step.argument / 2 + step.flags)),
          m_password(program.text(step.argument + 1)),
          m_qop(kQops[step.flags % kQops.size()]),
          m_algorithm(kAlgorithms[step.flags / 4 % kAlgorithms.size()]) {}

    /** Adds the answer to the request. Throws for texts that can't be part of a line, and for unknown algorithms. */
    void run() {
        const auto challenge = KxMake<KxSipDigestChallengeInfo>(m_realm);
        challenge->setProperty("nonce", std::string("9f3c51d2"));
        challenge->setProperty("algorithm", m_algorithm);
        challenge->setQopOptions(m_qop);
        challenge->setProperty("opaque", std::string("x"));
        const KxHandle<KxSipDigestChallengeInfo> asked = received(challenge);
        const auto credentials =
            KxMake<KxSipDigestCredentialsInfo>(asked.isNil() ? challenge : asked, m_user, m_password);
        prepare(*credentials);
        if (!m_request.getURI().isNil()) {
            credentials->setDigestURI(m_request.getURI());
        }
        credentials->setQop(m_qop.substr(0, m_qop.find(',')), std::string("0a4f"), 1);
        const auto header = KxMake<KxSipAuthorizationHeader>(KxHandle<KxSipCredentialsInfo>(credentials));
        check(written(*header));
        m_request.addHeader(header, true);
    }

private:
    static constexpr std::array<const char*, 4> kQops = {"auth", "", "auth-int", "auth,auth-int"};
    static constexpr std::array<const char*, 6> kAlgorithms = {"MD5",     "MD5-sess", "SHA-256", "SHA-512-256-sess",
                                                               "unknown", ""};

    void prepare(KxSipDigestCredentialsInfo& credentials) const {
        credentials.setMethod(std::string(m_request.getMethod()));
        credentials.setEntityBody(std::string_view(m_request.hasBody() ? m_request.getBody() : "",
                                                   m_request.hasBody() ? m_request.getStoredBodyLength() : 0));
    }
    /** Whether the grammar keeps the text as it is. The classic one drops what needs quotes, and what they protect; the
        RFC grammar has no NUL in quotes. */
    static bool isKept(std::string_view text) {
        return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
            return isRFC() ? c != '\0'
                           : KxAscii::isAlpha(c) || KxAscii::isDigit(c) ||
                                 std::string_view("-.:@/").find(c) != std::string_view::npos;
        });
    }
    /** The challenge as the client reads it. */
    KxHandle<KxSipDigestChallengeInfo> received(const KxHandle<KxSipDigestChallengeInfo>& challenge) const {
        const auto header = KxMake<KxSipWWWAuthenticateHeader>(KxHandle<KxSipChallengeInfo>(challenge));
        const KxHandle<KxSipWWWAuthenticateHeader> read = reread<KxSipWWWAuthenticateHeader>(written(*header));
        const auto asked = read.isNil() ? KxHandle<KxSipDigestChallengeInfo>() : read->getDigestChallenge();
        if (isKept(m_realm)) {
            same("a challenge is read as it was written", m_realm,
                 asked.isNil() ? std::string_view("no challenge") : asked->getRealm().view());
        }
        return asked;
    }
    template <class H>
    static KxHandle<H> reread(const std::string& line) {
        KxHandle<KxSipHeader> header;
        outcomeOf([&] {
            KxByteArrayInputStream in{std::string_view(line)};
            header = KxSipHeader::sConstructFrom(in);
            return std::string();
        });
        return KxHandle<H>(dynamic_cast<H*>(header.get()));
    }
    void check(const std::string& line) const {
        const KxString uri = m_request.getURI().isNil() ? KxString("") : m_request.getURI()->getString();
        if (!isKept(m_realm) || !isKept(m_user) || !isKept(uri.view()) || line.size() > 900) {
            return;
        }
        const KxHandle<KxSipAuthorizationHeader> read = reread<KxSipAuthorizationHeader>(line);
        const auto given = read.isNil() ? KxHandle<KxSipDigestCredentialsInfo>() : read->getDigestCredentials();
        if (given.isNil()) {
            fail("credentials are read as they were written", line, "");
        }
        prepare(*given);
        if (!given->validate(given->getUsername(), KxString(m_password), KxString(m_realm))) {
            fail("the right password is accepted", line, m_password);
        }
        // The response of a classic session need not depend on the password.
        if (m_algorithm != "MD5-sess" &&
            given->validate(given->getUsername(), KxString(m_password + "x"), KxString(m_realm))) {
            fail("a wrong password is refused", line, m_password);
        }
    }

    KxSipRequest& m_request;
    std::string m_realm, m_user, m_password, m_qop, m_algorithm;
};
