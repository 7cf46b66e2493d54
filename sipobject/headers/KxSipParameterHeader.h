#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxLazyParameters.h"
#include "util/KxStreamTokenizer.h"

/** Gives a header, or a family of headers (Base), a list of parameters behind its value: *( SEMI generic-param ), kept
    in order. A comma outside quotes ends it. [RFC 3261 25.1] */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipParameterHeader : public Base {
public:
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }
    /** Nil when absent. */
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    bool isParameterPresent(std::string_view name) const { return m_parameters.isPresent(name); }
    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void removeParameter(std::string_view name) { m_parameters.removeValue(name); }

protected:
    using Base::Base;
    KxSipParameterHeader() = default;
    KxSipParameterHeader(const KxSipParameterHeader&) = default;

    /** Takes the list, if a ";" stands next. */
    void parseParameters(KxInputStream& in) {
        if (KxStreamTokenizer::sDiscardWhite(in) == ';') {
            in.read();
            m_parameters.write().parse(in);
        }
    }
    void serializeParameters(KxOutputStream& out) const { m_parameters.serializeBehind(out); }

    KxLazyParameters m_parameters;
};

/** As above, for headers that say what the sender would take: one of the parameters is how much he would like it.
    accept-param = ("q" EQUAL qvalue) / generic-param                         [RFC 3261 20.1] */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipPreferenceHeader : public KxSipParameterHeader<H, Base> {
public:
    /** As written; nil when absent, which means 1. */
    KxString getQValue() const { return this->getParameter("q"); }
    void setQValue(const KxString& q) { this->setParameter("q", q); }
    void removeQValue() { this->removeParameter("q"); }
};
