#pragma once

#include "sipobject/SipApi.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

/** A fresh Call-ID: a UUID, "@" and a host. [RFC 3261 8.1.1.4] Objects are used by one thread at a time; making them is
    safe from several. */
class KX_SIP_API KxSipCallid final : public KxObject {
public:
    /** With this host's name, which is looked up once. */
    KxSipCallid();
    /** Null takes this host's name. */
    explicit KxSipCallid(const char* host);
    /** Shares the text. */
    KxSipCallid(const KxSipCallid&) = default;
    KxSipCallid* clone() const override;

    const char* getValue() const { return m_value.c_str(); }
    operator const char*() const { return getValue(); }

private:
    friend class KxSipRequest;

    void reGenerate(const char* host);

    KxString m_value;
};
