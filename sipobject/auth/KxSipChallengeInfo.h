#pragma once

#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/SipApi.h"
#include "util/KxByteArray.h"
#include "util/KxString.h"

class KxInputStream;
class KxOutputStream;

/** What a server wants to be told before it serves: the challenge of an authentication scheme. A header shares the
    challenge that it is given; a copy of a header has a copy of it. Used by one thread at a time. [RFC 2617 1.2] */
class KX_SIP_API KxSipChallengeInfo : public KxObject {
public:
    ~KxSipChallengeInfo() override;
    KxSipChallengeInfo* clone() const override = 0;

    /** Writes the properties, without the scheme. */
    virtual void serialize(KxOutputStream& out) const = 0;
    /** The scheme, "Digest". */
    virtual KxString getType() const = 0;
    /** The protection space; nil when absent. */
    virtual KxString getRealm() const = 0;

    /** Writes what serialize writes. */
    void display(KxOutputStream& out, bool verbose) const override;

    /** Reads the properties of a challenge of the scheme, letter case ignored; nil reads as no bytes.
        Throws KxException "Challenge type not supported !" and what the scheme's class throws. */
    static KxHandle<KxSipChallengeInfo> constructFrom(const char* scheme, const KxHandle<KxByteArray>& properties);

    KX_MEM_ACCOUNT_OPERATORS(s_account);

protected:
    KxSipChallengeInfo() = default;
    KxSipChallengeInfo(const KxSipChallengeInfo&) = default;
    KxSipChallengeInfo& operator=(const KxSipChallengeInfo&) = default;

private:
    friend class KxSipAuthenticateHeader;

    static KxSipFault sRead(std::string_view scheme, KxInputStream& properties,
                            KxHandle<KxSipChallengeInfo>& challenge);

    static Oskan::MemAccount s_account;
};
