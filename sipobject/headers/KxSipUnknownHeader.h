#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/headers/KxSipHeader.h"

/** A header whose name is not registered, kept as name and raw text. One object per line: commas are part of the text.
    extension-header = header-name HCOLON header-value                        [RFC 3261 25.1]
    Blanks before the value are dropped, blanks after it are kept.  "X-Foo:  a, b " -> "X-Foo: a, b " */
class KX_SIP_API KxSipUnknownHeader final : public KxSipHeader {
public:
    /** Null reads as empty. */
    KxSipUnknownHeader(const char* name, const char* value);
    KxSipUnknownHeader(const KxString& name, const KxString& value);
    KxSipUnknownHeader(KxSipAnyText name, KxSipAnyText value)
        : KxSipUnknownHeader(name.needed("header name"), value.line()) {}
    KxSipUnknownHeader(const KxSipUnknownHeader&) = default;

    [[nodiscard]] KxSipUnknownHeader* clone() const override;
    const KxString& getExpandedToken() const override { return m_name; }

    const KxString& getValue() const { return m_value; }
    /** Throws KxSipParseError if the text contains CR, LF or NUL. */
    void setValue(KxSipText value) { m_value = value.line(); }

protected:
    void doParse(KxInputStream& in) override;
    KxSipFault readValue(KxSipLine& line) override;
    void doSerialize(KxOutputStream& out) const override;

private:
    KxString m_value;
    KxString m_name;
};
