#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

/** The family of headers whose value is a text for people or logs: the whole line, commas and blanks at its end
    included, byte for byte; only white space in front of it is dropped. */
template <class H>
class KxSipTextHeader : public KxSipHeaderOf<H> {
protected:
    KxSipTextHeader() = default;
    /** Stored as given, unchecked. */
    explicit KxSipTextHeader(const KxString& text) : m_text(text) {}
    KxSipTextHeader(const KxSipTextHeader&) = default;

    KxString m_text;

private:
    friend class KxSipHeaderOf<H>;

    KxSipFault parseValue(KxInputStream& in) {
        KxScannedText scanned;
        KxScannedText::skipSpace(in);
        m_text = KxString(scanned.until<'\r', '\n'>(in));
        return {};
    }
    void serializeValue(KxOutputStream& out) const { out.write(m_text.view()); }
};
