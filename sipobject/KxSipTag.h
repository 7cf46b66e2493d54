#pragma once

#include "sipobject/SipApi.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

/** A fresh From or To tag: an optional prefix, a random number and the time, in hexadecimal with "-" between them. The
    number comes from the runtime library's generator, which the library never seeds: a tag is unique, not secret.
    [RFC 3261 19.3] */
class KX_SIP_API KxSipTag final : public KxObject {
public:
    /** Null makes a tag without prefix. */
    explicit KxSipTag(const char* prefix);
    KxSipTag(const KxSipTag&) = default;
    KxSipTag* clone() const override;

    /** Null when there is no value. */
    const char* getValue() const { return m_value.isNil() ? nullptr : m_value.c_str(); }
    operator const char*() const { return getValue(); }

private:
    KxSipTag() = default;
    void reGenerate(const char* prefix);

    KxString m_value;
};
