#pragma once

#include "sipobject/address/KxSipURL.h"
#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTextKeepingHeader.h"
#include "util/KxOutputStream.h"

/** The headers whose value is a URI in angle brackets, without a display name, and parameters:
    LAQUOT absoluteURI RAQUOT *( SEMI generic-param ). The URI is the whole text between the brackets, including commas
    and its own parameters; in the RFC grammar, it has no blanks. A class H defines the error text for missing, unclosed
    or empty brackets:

        static constexpr const char* kInvalid = "...";

    Errors in the URI are passed on. A refused value of a header line is kept as text, up to the next comma outside
    quotes and brackets. */
template <class H>
class KxSipURIHeader : public KxSipParameterHeader<H, KxSipTextKeepingHeader<H>> {
    using Base = KxSipParameterHeader<H, KxSipTextKeepingHeader<H>>;

public:
    /** The URI itself, shared; nil if the constructor was given nil or the value was kept as text. */
    const KxHandle<KxURI>& getURI() const { return m_URI; }
    /** Holds a copy; nil stays nil. Replaces a value that was kept as text, too. The parameters stay. */
    void setURI(const KxHandle<KxURI>& uri) {
        m_URI = copyOf(uri);
        this->forgetText();
    }
    /** The URI as a SIP URL; nil if it is not one. */
    KxHandle<KxSipURL> getURL() const {
        const bool isURL = !m_URI.isNil() && m_URI->isSipURL();
        return KxHandle<KxSipURL>(isURL ? static_cast<KxSipURL*>(m_URI.get()) : nullptr);
    }

    static constexpr const char* kHidesCommas = "\"<";

protected:
    KxSipURIHeader() = default;
    /** Holds a copy; nil stays nil. */
    explicit KxSipURIHeader(const KxHandle<KxURI>& uri) : m_URI(copyOf(uri)) {}
    KxSipURIHeader(const KxSipURIHeader& other) : Base(other), m_URI(copyOf(other.m_URI)) {}

    void forgetValue() {
        m_URI = nullptr;
        this->m_parameters.clear();
    }

private:
    friend class KxSipHeaderOf<H>;

    static KxHandle<KxURI> copyOf(const KxHandle<KxURI>& uri) {
        return KxHandle<KxURI>(uri.isNil() ? nullptr : uri->clone());
    }

    KxSipFault parseValue(KxSipLine& line) {
        KxStreamTokenizer::sDiscardWhite(line);
        const bool isOpened = line.read() == '<';
        const bool isStrict = KxSipGrammar::sReadsNameAddressesStrictly();
        if (!isStrict) {
            line.skipSpace();
        }
        // trailing white space is part of the URI: a host may end in a tab, and trimming would drop that tab when
        // the written header is read again
        const std::string_view text = isOpened ? line.until<'>'>() : std::string_view();
        if (text.empty() || line.read() != '>') {
            return KxSipFault(H::kInvalid);
        }
        if (isStrict && text.find_first_of(" \t\"<") != std::string_view::npos) {
            return KxSipFault(H::kInvalid);
        }
        KxSipLine uri(text);
        if (const KxSipFault fault = KxURI::sConstructFrom(uri, true, m_URI)) {
            return fault;
        }
        return isStrict && uri.fill() ? KxSipFault(H::kInvalid) : this->parseParameters(line);
    }
    void serializeValue(KxOutputStream& out) const {
        out.write('<');
        out << m_URI;
        out.write('>');
        this->serializeParameters(out);
    }

    KxHandle<KxURI> m_URI;
};
