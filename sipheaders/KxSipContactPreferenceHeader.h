#pragma once

#include "sipheaders/KxSipParameterValue.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/headers/KxSipParameterHeader.h"

/** The headers that say which contacts of the callee the caller wants: "*" *(SEMI feature-param). A class H defines the
    error for a value without the "*":

        static constexpr const char* kInvalid = "...";

    feature-param = enc-feature-tag [EQUAL LDQUOT ( tag-value-list / string-value ) RDQUOT]   [RFC 3840 9] */
template <class H>
class KxSipContactPreferenceHeader : public KxSipParameterHeader<H, KxSipReceivedHeader<H>> {
    using Base = KxSipParameterHeader<H, KxSipReceivedHeader<H>>;

public:
    /** Without features, which any contact fits. */
    KxSipContactPreferenceHeader() = default;

    /** The value of a feature, such as "audio" or "+sip.instance", without quotes and escapes: {INVITE,BYE} of
        methods="INVITE,BYE". Empty for a feature without a value, which means TRUE; nil when absent. */
    KxString getFeature(std::string_view name) const { return KxSipParameterValue::sText(this->getParameter(name)); }
    /** The feature is then written with its value in quotes; without "=" if there is no text. Throws KxSipParseError
        for CR, LF and NUL. */
    void setFeature(KxSipText name, KxSipText value = {}) {
        this->setParameter(name.needed("feature").view(),
                           value.isNone() ? KxString("") : KxSipParameterValue::sQuoted(value));
    }

protected:
    KxSipContactPreferenceHeader(const KxSipContactPreferenceHeader&) = default;

    /** Sets or removes a parameter without a value. */
    void setFlag(std::string_view name, bool isSet) {
        isSet ? this->setParameter(name, KxString("")) : this->removeParameter(name);
    }

private:
    friend class KxSipHeaderOf<H>;

    KxSipFault parseValue(KxSipLine& line) {
        return line.token(KxSipHeader::sDelimeters) == "*" ? this->parseParameters(line) : KxSipFault(H::kInvalid);
    }
    void serializeValue(KxOutputStream& out) const {
        out.write('*');
        this->serializeParameters(out);
    }
};
