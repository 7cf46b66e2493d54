#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"

/** The headers whose value is a text for people or logs: the whole line, byte for byte, including commas and trailing
    blanks. Only leading white space is dropped. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipTextHeader : public Base {
protected:
    KxSipTextHeader() = default;
    /** Stored as given, unchecked. */
    explicit KxSipTextHeader(const KxString& text) : m_text(text) {}
    KxSipTextHeader(const KxSipTextHeader&) = default;

    KxString m_text;

private:
    friend class KxSipHeaderOf<H>;

    KxSipFault parseValue(KxSipLine& line) {
        line.skipSpace();
        m_text = KxString(line.untilBreak());
        return {};
    }
    void serializeValue(KxOutputStream& out) const { out.writeAll(m_text); }
};
