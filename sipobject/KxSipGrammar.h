#pragma once

#include "sipobject/SipApi.h"

#include <atomic>
#include <cstdint>

/** The grammar by which the process reads and writes messages. The classic one is the default, and is what
    docs/behaviour.md lists first. The RFC grammar follows RFC 3261 and its updates. The grammar is chosen once, before the
    first message is read: by the configuration parameter "tandril.sip.rfcGrammar", or by sChoose, which wins.

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

    /** From now on sChoose can't change the grammar. */
    static void sFix() {
        if (!s_isFixed.load(std::memory_order_relaxed)) [[unlikely]] {
            sFixChoice();
        }
    }

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

private:
    enum State : std::uint8_t { kClassic, kRFC, kOpen };

    static bool sIsRFC() { return s_state.load(std::memory_order_relaxed) != kClassic && sDecide(); }
    static bool sDecide();
    static void sFixChoice();

    static std::atomic<std::uint8_t> s_state;
    static std::atomic<bool> s_isFixed;
};
