#pragma once

#include "sipobject/address/KxURI.h"
#include "util/KxLazyParameters.h"

/** A telephone number with parameters.
    telephone-uri = "tel:" telephone-subscriber                               [RFC 3966 3]
    Lenient: neither the scheme's text nor the digits are checked; parameters always belong to the URL.
    "tel:+1-555-0100;phone-context=x" -> the same. Used by one thread at a time. */
class KX_SIP_API KxTelURL final : public KxURI {
public:
    static const KxConstString sToken;

    KxTelURL();
    /** Throws as parse. */
    explicit KxTelURL(const char* text);
    KxTelURL(const KxTelURL& other);
    KxTelURL* clone() const override;

    bool hasParameters() const override;
    KxString getString() const override;
    /** Reads one URL; a ">" after it is consumed. Throws KxSipParseError "Invalid TelURL" for 1024 characters and
        more, where all count that are kept: the scheme's, the number's and the parameters', without brackets, colons,
        carriage returns, the first ";" and plus signs that are dropped. */
    void parse(KxInputStream& in) override;
    using KxURI::parse;
    void display(KxOutputStream& out, bool verbose) const override;

    /** The number with its "+"; null when there is none. Holds while the URL stands unchanged. */
    const char* getPhoneNumber() const { return m_number.isNil() ? nullptr : m_number.c_str(); }
    /** Whether it began with "+". */
    bool isGlobalNumber() const { return m_isGlobal; }
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    void clearParameters() { m_parameters.clear(); }

    /** The printed forms, byte by byte. */
    bool operator==(const KxTelURL& other) const { return getString() == other.getString(); }

private:
    friend class KxURI;

    KxSipFault read(KxInputStream& in);
    KxSipFault readWhole(KxInputStream& in);
    void setNumber(std::string_view token, char delimiter);

    KxString m_number;
    KxLazyParameters m_parameters;
    bool m_isGlobal = false;
};

/** Writes the printed form; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxTelURL>& url);
