#pragma once

#include "sipobject/SipApi.h"

#include <cstdint>

/** A sequence number for a CSeq header. The default value comes from the runtime library's random number generator,
    which this library never seeds, so it can be predicted. In the RFC grammar it comes from the system's random source.
    [RFC 3261 8.1.1.5] */
class KX_SIP_API KxSipCSeq {
public:
    /** A random number below 16777215. */
    KxSipCSeq();
    explicit KxSipCSeq(std::uint32_t value) : m_value(value) {}

    operator unsigned() const { return m_value; }

private:
    void setValue(std::uint32_t value) { m_value = value; }

    std::uint32_t m_value;
};
