#pragma once

#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/SipApi.h"
#include "util/KxByteArray.h"
#include "util/KxString.h"

class KxInputStream;
class KxOutputStream;

/** The challenge of an authentication scheme, with which a server asks a client to authenticate. A header shares the
    challenge that it is given; a copy of a header has its own copy. Used by one thread at a time. [RFC 2617 1.2] */
class KX_SIP_API KxSipChallengeInfo : public KxObject {
public:
    ~KxSipChallengeInfo() override;
    [[nodiscard]] KxSipChallengeInfo* clone() const override = 0;

    /** Writes the properties, without the scheme. */
    virtual void serialize(KxOutputStream& out) const = 0;
    /** The scheme, such as "Digest". */
    virtual KxString getType() const = 0;
    /** The protection space; nil when absent. */
    virtual KxString getRealm() const = 0;

    /** Writes the same text as serialize. */
    void display(KxOutputStream& out, bool verbose) const override;

    /** Returns a challenge of the scheme, whose letter case is ignored, read from the properties; nil reads as empty.
        In the RFC grammar a scheme other than Digest gives a KxSipOtherChallengeInfo. Throws KxException "Challenge
        type not supported !" and the errors of the scheme's class. */
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
