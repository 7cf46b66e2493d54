#pragma once

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipHeaderOf.h"
#include "sipobject/headers/KxSipParameterText.h"
#include "sipobject/headers/KxSipQValue.h"
#include "util/KxSharedParameters.h"
#include "util/KxStreamTokenizer.h"

/** Adds a list of parameters after the value of a header or of a group of headers (Base): *( SEMI generic-param ), kept
    in order. A comma outside quotes ends the list. In the RFC grammar, they are what KxSipParameterText reads, and
    other text after the value is refused. [RFC 3261 25.1] */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipParameterHeader : public Base {
public:
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    /** Nil when absent. */
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    [[nodiscard]] bool isParameterPresent(std::string_view name) const { return m_parameters.isPresent(name); }
    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void setParameter(std::string_view name, KxSipStdText value) {
        setParameter(KxSipText(name).checked().view(), value.line());
    }
    void removeParameter(std::string_view name) { m_parameters.removeValue(name); }

protected:
    using Base::Base;
    KxSipParameterHeader() = default;
    KxSipParameterHeader(const KxSipParameterHeader&) = default;

    /** Reads the list if a ";" follows. */
    [[gnu::always_inline]] KxSipFault parseParameters(KxSipLine& line) {
        if (KxSipGrammar::sReadsParametersStrictly()) [[unlikely]] {
            return KxSipParameterText::sRead(line, m_parameters);
        }
        if (KxStreamTokenizer::sDiscardWhite(line) == ';') {
            line.read();
            m_parameters.write().parse(line);
        }
        return {};
    }
    void serializeParameters(KxOutputStream& out) const { m_parameters.serializeWithSemicolon(out); }

    KxSharedParameters m_parameters;
};

/** As KxSipParameterHeader, for headers that list what the sender accepts: the parameter "q" is the preference.
    accept-param = ("q" EQUAL qvalue) / generic-param                         [RFC 3261 20.1] */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipQValueHeader : public KxSipParameterHeader<H, Base> {
public:
    /** The preference as text; nil when absent, which means 1. */
    KxString getQValue() const { return this->getParameter("q"); }
    void setQValue(const KxString& q) { this->setParameter("q", q); }
    void setQValue(KxSipStdText q) { setQValue(q.line()); }
    void removeQValue() { this->removeParameter("q"); }
    /** The preference in thousandths, 0 to 1000: 1000 when absent. None if it is not a qvalue, or if the value was kept
        as text and no q was set since. [RFC 3261 25.1] */
    [[nodiscard]] std::optional<std::uint32_t> getQValueInThousandths() const {
        if constexpr (requires { this->getText(); }) {
            if (!this->getText().empty() && !this->isParameterPresent("q")) {
                return std::nullopt;
            }
        }
        return KxSipQValue::sOf(this->m_parameters);
    }
    /** Writes the shortest form: 500 is "0.5". Throws KxSipParseError "Invalid q value" above 1000. */
    void setQValueInThousandths(std::uint32_t q) { setQValue(KxSipQValue::sWrite(q)); }
};
