#pragma once

#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/SipApi.h"
#include "util/KxByteArray.h"
#include "util/KxString.h"

class KxInputStream;
class KxOutputStream;

/** What a client says to prove who it is: the credentials of an authentication scheme. Used by one thread at a time.
    [RFC 2617 1.2] */
class KX_SIP_API KxSipCredentialsInfo : public KxObject {
public:
    ~KxSipCredentialsInfo() override;
    KxSipCredentialsInfo* clone() const override = 0;

    /** Whether whoever made these credentials knew the password of the user in the realm. */
    virtual bool validate(const KxString& username, const KxString& password, const KxString& realm) = 0;
    /** Writes the properties, without the scheme. */
    virtual void serialize(KxOutputStream& out) const = 0;
    /** These are nil when absent. */
    virtual KxString getUsername() const = 0;
    virtual KxString getPassword() const = 0;
    virtual KxString getRealm() const = 0;
    /** The scheme, "Digest". */
    virtual const char* getType() const = 0;

private:
    virtual void setUsername(const KxString& username) = 0;
    virtual void setPassword(const KxString& password) = 0;

public:
    /** Writes what serialize writes. */
    void display(KxOutputStream& out, bool verbose) const override;

    /** Reads the properties of credentials of the scheme, letter case ignored; nil reads as no bytes.
        Throws KxException "Credentials type not supported !" and what the scheme's class throws. */
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
