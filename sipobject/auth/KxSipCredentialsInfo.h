#pragma once

#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/SipApi.h"
#include "util/KxByteArray.h"
#include "util/KxString.h"

class KxInputStream;
class KxOutputStream;

/** The credentials of an authentication scheme, with which a client proves its identity. Used by one thread at a time.
    [RFC 2617 1.2] */
class KX_SIP_API KxSipCredentialsInfo : public KxObject {
public:
    ~KxSipCredentialsInfo() override;
    [[nodiscard]] KxSipCredentialsInfo* clone() const override = 0;

    /** Whether these credentials were created with this password for this user and realm. */
    virtual bool validate(const KxString& username, const KxString& password, const KxString& realm) = 0;
    /** Writes the properties, without the scheme. */
    virtual void serialize(KxOutputStream& out) const = 0;
    /** These are nil when absent. */
    virtual KxString getUsername() const = 0;
    virtual KxString getPassword() const = 0;
    virtual KxString getRealm() const = 0;
    /** The scheme, such as "Digest". */
    virtual const char* getType() const = 0;

private:
    virtual void setUsername(const KxString& username) = 0;
    virtual void setPassword(const KxString& password) = 0;

public:
    /** Writes the same text as serialize. */
    void display(KxOutputStream& out, bool verbose) const override;

    /** Returns credentials of the scheme, whose letter case is ignored, read from the properties; nil reads as empty.
        In the RFC grammar a scheme other than Digest gives a KxSipOtherCredentialsInfo. Throws KxException "Credentials
        type not supported !" and the errors of the scheme's class. */
    static KxHandle<KxSipCredentialsInfo> constructFrom(const char* scheme, const KxHandle<KxByteArray>& properties);

    KX_MEM_ACCOUNT_OPERATORS(s_account);

protected:
    KxSipCredentialsInfo() = default;
    KxSipCredentialsInfo(const KxSipCredentialsInfo&) = default;
    KxSipCredentialsInfo& operator=(const KxSipCredentialsInfo&) = default;

private:
    friend class KxSipAuthorizationHeader;

    static KxSipFault sRead(std::string_view scheme, KxInputStream& properties,
                            KxHandle<KxSipCredentialsInfo>& credentials);

    static Oskan::MemAccount s_account;
};
