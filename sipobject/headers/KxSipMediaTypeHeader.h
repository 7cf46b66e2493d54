#pragma once

#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxLazyParameters.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxStreamTokenizer.h"

/** The family of headers whose value is a media type: type "/" subtype *(";" parameter). */
template <class H>
class KxSipMediaTypeHeader : public KxSipHeaderOf<H> {
public:
    const KxString& getType() const { return m_type; }
    const KxString& getSubType() const { return m_subType; }
    /** Type, "/" and subtype, a new string. */
    KxString getMediaType() const {
        KxString text(
            KxStringBuffer::sCreate(m_type.c_str(), m_type.length(), m_type.length() + m_subType.length() + 1));
        text.append("/").append(m_subType.view());
        return text;
    }

    bool isParameterPresent(std::string_view name) const { return m_parameters.isPresent(name); }
    KxString getParameter(std::string_view name) const { return m_parameters.getValue(name); }
    void setParameter(std::string_view name, const KxString& value) { m_parameters.write().setValue(name, value); }
    void removeParameter(std::string_view name) { m_parameters.removeValue(name); }
    /** The list itself, shared; never nil. */
    KxHandle<KxParameters> getParameters() const { return m_parameters.handle(); }

protected:
    KxSipMediaTypeHeader() = default;
    /** Stored as given, unchecked; null reads as empty. */
    KxSipMediaTypeHeader(const char* type, const char* subType)
        : m_type(type == nullptr ? "" : type), m_subType(subType == nullptr ? "" : subType) {}
    KxSipMediaTypeHeader(const KxSipMediaTypeHeader&) = default;

    KxString m_type;
    KxString m_subType;
    KxLazyParameters m_parameters;

private:
    friend class KxSipHeaderOf<H>;

    static constexpr KxCharSet kSlash{"/"};

    void parseValue(KxInputStream& in) {
        KxScannedText scanned;
        m_type = KxString(KxAscii::trim(scanned.token(in, kSlash)));
        in.read();
        m_subType = KxString(scanned.token(in, KxSipHeader::sDelimeters));
        if (m_type.empty() || m_subType.empty()) {
            KxSipParseError::sThrow("Invalid Accept header");
        }
        if (KxStreamTokenizer::sDiscardWhite(in) == ';') {
            in.read();
            const std::string_view parameters = scanned.until<','>(in);
            if (!KxAscii::trim(parameters).empty()) {
                m_parameters.write().parse(parameters);
            }
        }
    }
    void serializeValue(KxOutputStream& out) const {
        out.write(m_type.view());
        out.write('/');
        out.write(m_subType.view());
        m_parameters.serializeBehind(out);
    }
};
