#pragma once

#include "sipobject/KxSipText.h"
#include "sipobject/SipApi.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

/** A new Call-ID: a UUID, "@" and a host name. An object is used by one thread at a time; several threads may create
    objects at once. [RFC 3261 8.1.1.4] */
class KX_SIP_API KxSipCallid final : public KxObject {
public:
    /** Uses the name of this host, which is looked up once per process. */
    KxSipCallid();
    /** Null means the name of this host. */
    explicit KxSipCallid(const char* host);
    explicit KxSipCallid(KxSipText host) : KxSipCallid(host.isNone() ? nullptr : host.line().c_str()) {}
    /** The copy shares the text. */
    KxSipCallid(const KxSipCallid&) = default;
    [[nodiscard]] KxSipCallid* clone() const override;

    const char* getValue() const { return m_value.c_str(); }
    operator const char*() const { return getValue(); }

private:
    friend class KxSipRequest;

    void reGenerate(const char* host);

    KxString m_value;
};
