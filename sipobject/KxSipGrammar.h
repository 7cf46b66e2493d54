#pragma once

#include "sipobject/SipApi.h"

#include <atomic>
#include <cstdint>

/** The grammar by which the process reads and writes messages. The classic one is the default, and is what
    docs/behaviour.md lists first. The RFC grammar follows RFC 3261 and its updates. The grammar is chosen once, before
    the first message is read: by the configuration parameter "tandril.sip.rfcGrammar", or by sChoose, which wins.

    Each function below is one rule in which the two differ; the code asks for the rule where it applies. They may be
    called on any thread. */
class KX_SIP_API KxSipGrammar {
public:
    enum class Choice : std::uint8_t { Classic, RFC };

    KxSipGrammar() = delete;

    /** Throws KxException "The grammar can't be chosen once a message has been read" if that is so, and the choice is
        another one. To be called at start-up, before a second thread uses the library. */
    static void sChoose(Choice choice);
    /** The grammar in use. Reads the configuration if nothing was chosen. */
    [[nodiscard]] static Choice sChosen() { return sIsRFC() ? Choice::RFC : Choice::Classic; }

    // ---- start lines ----

    /** Whether a request line has exactly one blank on each side of a Request-URI without brackets and headers, and a
        status code is from 100 to 699. [RFC 3261 7.1, 7.2, 19.1.1] */
    [[nodiscard]] static bool sHasExactStartLines() { return sIsRFC(); }
    /** Whether "sip/2.0" is "SIP/2.0". [RFC 3261 7.1] */
    [[nodiscard]] static bool sIgnoresCaseOfVersion() { return sIsRFC(); }
    /** Whether reason phrases may have any length. [RFC 3261 25.1] */
    [[nodiscard]] static bool sKeepsLongPhrases() { return sIsRFC(); }
    /** Whether the reason phrases of responses that are built are those of the RFCs. [RFC 3261 21] */
    [[nodiscard]] static bool sHasRFCPhrases() { return sIsRFC(); }

    // ---- checks of whole messages ----

    /** Whether a message that does not accept the type of its own body is unusable. */
    [[nodiscard]] static bool sAppliesAcceptToOwnBody() { return !sIsRFC(); }
    /** Whether required headers are checked even if something in a line can't be read. [RFC 3261 16.3] */
    [[nodiscard]] static bool sRefusesWithoutRequired() { return sIsRFC(); }
    /** Whether equal Content-Lengths are one. */
    [[nodiscard]] static bool sMergesEqualLengths() { return sIsRFC(); }
    /** Whether numbers must be numbers in their range. [RFC 3261 8.1.1.5, 20.14, 20.19, 20.22] */
    [[nodiscard]] static bool sChecksNumbers() { return sIsRFC(); }

    // ---- header lines ----

    /** Whether all white space around a fold is one blank. [RFC 3261 7.3.1] */
    [[nodiscard]] static bool sJoinsFoldsByBlank() { return sIsRFC(); }
    /** Whether a value that can't be read, or has text after it, is kept as text, and empty elements of a list are
        skipped; else the line is dropped. [RFC 3261 7.3.1, 16.3, 20] */
    [[nodiscard]] static bool sReadsLinesByValue() { return sIsRFC(); }
    /** Whether the compact names that RFC 3261 does not list, and Call-Info, are known.
        [RFC 3261 20.9, RFC 3515, 3841, 3892, 4474, 6665, 8224] */
    [[nodiscard]] static bool sKnowsAllCompactNames() { return sIsRFC(); }
    /** Whether headers are looked up by their kind: their names in any letter case, full and compact; and option tags
        in any letter case. [RFC 3261 7.3.1, 7.3.3] */
    [[nodiscard]] static bool sFindsHeadersByKind() { return sIsRFC(); }
    /** Whether a header of which there may be one must not be repeated. [RFC 3261 7.3.1] */
    [[nodiscard]] static bool sChecksRepetition() { return sIsRFC(); }
    /** Whether dates are those of RFC 1123, in GMT, with the right weekday. [RFC 3261 20.17] */
    [[nodiscard]] static bool sChecksDates() { return sIsRFC(); }

    // ---- name-addresses, header parameters ----

    /** Display names are tokens or quoted strings of any length, and what else is not a name-address is refused; one
        that an application gives is quoted if it has to be. [RFC 3261 20.10, 25.1] */
    [[nodiscard]] static bool sReadsNameAddressesStrictly() { return sIsRFC(); }
    /** From and To keep all of their URL, Route and Record-Route their parameters, and Refer-To its display name,
        brackets and parameters. [RFC 3261 20.30, 20.34, RFC 3515 2.1] */
    [[nodiscard]] static bool sKeepsWholeAddresses() { return sIsRFC(); }
    /** Header parameters are what KxSipParameterText reads; a comma within quotes never separates values.
        [RFC 3261 7.3.1, 25.1] */
    [[nodiscard]] static bool sReadsParametersStrictly() { return sIsRFC(); }

    // ---- authentication, numbers that are made ----

    /** Authentication: properties are read as auth-params: quoted strings with escapes, also empty [RFC 7235 2.1]. */
    static bool sReadsAuthParams() { return sIsRFC(); }
    /** Authentication: all properties are written, quoted or not as the RFC says, with escapes [RFC 7616 3.4, 3.5]. */
    static bool sWritesAuthParams() { return sIsRFC(); }
    /** Authentication: schemes other than Digest are kept as text [RFC 7235 2.1]. */
    static bool sKeepsOtherSchemes() { return sIsRFC(); }
    /** Digest: SHA-256 and SHA-512-256 too; letter case is ignored; MD5 if none is named [RFC 7616 3.3, RFC 8760]. */
    static bool sKnowsDigestsByName() { return sIsRFC(); }
    /** Digest: A1 of a session is made from the digits of the first digest, not from its bytes [RFC 7616 3.4.2]. */
    static bool sMakesSessionsFromDigits() { return sIsRFC(); }
    /** Digest: for auth-int, no body is an empty body, which has a digest [RFC 7616 3.4.3]. */
    static bool sDigestsEmptyBody() { return sIsRFC(); }
    /** Digest: the qop options are a list of tokens, without regard to letter case [RFC 7616 3.3]. */
    static bool sReadsQopOptionsAsList() { return sIsRFC(); }
    /** The challenge of a response is the topmost that can be answered [RFC 8760 2.4]. */
    static bool sPicksAnswerableChallenge() { return sIsRFC(); }
    /** Tags and sequence numbers can't be predicted [RFC 3261 19.3]. */
    static bool sMakesUnpredictableNumbers() { return sIsRFC(); }

    // ---- hosts, URLs, Via ----

    /** Hosts may be IPv6 references. Other hosts, and ports, are checked. [RFC 3261 25.1, RFC 5954 4.1] */
    static bool sChecksHosts() { return sIsRFC(); }
    /** The parts of a SIP URL are those of RFC 3261 25.1, its escapes are kept, and other text is refused; "sips" is
        known. [RFC 5630] */
    static bool sReadsURLsStrictly() { return sIsRFC(); }
    /** URLs are equal if they mean the same. [RFC 3261 19.1.4, RFC 3966 4] */
    static bool sComparesURLsByMeaning() { return sIsRFC(); }
    /** A Via may have any transport, and quoted commas; the default port depends on the transport, and sent-by compares
        by meaning. [RFC 3261 18.1.1, 20.42] */
    static bool sReadsViasStrictly() { return sIsRFC(); }

    /** From now on sChoose can't change the grammar. */
    static void sFix() {
        if (!s_isFixed.load(std::memory_order_relaxed)) [[unlikely]] {
            sFixChoice();
        }
    }

private:
    enum State : std::uint8_t { kClassic, kRFC, kOpen };

    static bool sIsRFC() {
        const std::uint8_t state = s_state.load(std::memory_order_relaxed);
        return state != kClassic && (state == kRFC || sDecide());
    }
    static bool sDecide();
    static void sFixChoice();

    static std::atomic<std::uint8_t> s_state;
    static std::atomic<bool> s_isFixed;
};
