#pragma once

#include "sipobject/KxSipText.h"
#include "sipobject/SipApi.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

/** A new From or To tag: an optional prefix, a random number and the time, in hexadecimal and separated by "-". The
    random number comes from the runtime library's generator, which this library never seeds: a tag is unique, but can
    be predicted. In the RFC grammar it is the optional prefix, "-" and the text of sRandom. [RFC 3261 19.3] */
class KX_SIP_API KxSipTag final : public KxObject {
public:
    /** A null `prefix` gives a tag without prefix. */
    explicit KxSipTag(const char* prefix);
    explicit KxSipTag(KxSipText prefix) : KxSipTag(prefix.isNone() ? nullptr : prefix.line().c_str()) {}
    KxSipTag(const KxSipTag&) = default;
    [[nodiscard]] KxSipTag* clone() const override;

    /** A tag from the system's random source, which cannot be predicted. The messages that are built by named parts use
        it. [RFC 3261 19.3] */
    [[nodiscard]] static KxString sRandom();

    /** The tag; null if there is no value. */
    const char* getValue() const { return m_value.isNil() ? nullptr : m_value.c_str(); }
    operator const char*() const { return getValue(); }

private:
    KxSipTag() = default;
    void reGenerate(const char* prefix);

    KxString m_value;
};
