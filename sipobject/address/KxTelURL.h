#pragma once

#include "sipobject/address/KxURI.h"
#include "util/KxSharedParameters.h"

/** A telephone number with parameters.
    telephone-uri = "tel:" telephone-subscriber                               [RFC 3966 3]
    Lenient: neither the text of the scheme nor the digits are checked; parameters always belong to the URL.
    "tel:+1-555-0100;phone-context=x" -> the same. Used by one thread at a time. */
class KX_SIP_API KxTelURL final : public KxURI {
public:
    static const KxConstString sToken;

    KxTelURL();
    /** Throws as parse does. */
    explicit KxTelURL(const char* text);
    explicit KxTelURL(KxSipText text);
    KxTelURL(const KxTelURL& other);
    [[nodiscard]] KxTelURL* clone() const override;

    [[nodiscard]] bool hasParameters() const override;
    KxString getString() const override;
    /** Reads one URL; a ">" after it is consumed. Throws KxSipParseError "Invalid TelURL" for 1024 or more characters.
        All kept characters of scheme, number and parameters count; brackets, colons, carriage returns, the first ";"
        and dropped plus signs do not. */
    void parse(KxInputStream& in) override;
    /** As parse, but returns the fault instead of throwing it. */
    KxSipFault parse(KxSipLine& line);
    using KxURI::parse;
    void display(KxOutputStream& out, bool verbose) const override;

    /** The number with its "+"; null when there is none. Valid until the URL changes. */
    const char* getPhoneNumber() const { return m_number.isNil() ? nullptr : m_number.c_str(); }
    /** Whether the number begins with "+". */
    [[nodiscard]] bool isGlobalNumber() const { return m_isGlobal; }
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    void clearParameters() { m_parameters.clear(); }

    /** Compares the texts of both URLs byte by byte. In the RFC grammar, compares the numbers without visual separators
        and all parameters by name, and ignores letter case. [RFC 3966 4] */
    bool operator==(const KxTelURL& other) const;

private:
    friend class KxURI;

    void setNumber(std::string_view token, char delimiter);

    KxString m_number;
    KxSharedParameters m_parameters;
    bool m_isGlobal = false;
};

/** Writes the URL; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxTelURL>& url);
