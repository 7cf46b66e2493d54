#pragma once

#include "sipheaders/KxSipParameterValue.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/headers/KxSipParameterHeader.h"

/** The headers with parameters, *( SEMI generic-param ), for a class H that has accessors for them. H, or a family over
    this one, reads and writes what is before the parameters. */
template <class H>
class KxSipTextParameterHeader : public KxSipParameterHeader<H, KxSipReceivedHeader<H>> {
protected:
    KxSipTextParameterHeader() = default;
    KxSipTextParameterHeader(const KxSipTextParameterHeader&) = default;

    /** Without quotes and escapes; nil when absent. */
    KxString text(std::string_view name) const { return KxSipParameterValue::sText(this->getParameter(name)); }
    /** Throws KxSipParseError if the text is empty or contains CR, LF or NUL. */
    void setText(std::string_view name, KxSipText value) {
        this->setParameter(name, KxSipParameterValue::sTokenOrQuoted(value.needed(name)));
    }
    /** None when absent or no number. */
    std::optional<std::uint32_t> number(std::string_view name) const {
        return KxSipParameterValue::sNumber(this->getParameter(name));
    }
    void setNumber(std::string_view name, std::uint32_t value) {
        this->setParameter(name, KxSipParameterValue::sOfNumber(value));
    }
};
