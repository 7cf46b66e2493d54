#pragma once

#include "sipobject/headers/KxSipParameterHeader.h"
#include "util/KxOutputStream.h"

/** The headers whose value is a media type: type "/" subtype *(";" parameter). In the classic grammar, a comma ends the
    parameters even inside quotes; if the class is built on KxSipTextKeepingHeader, a value with a comma inside quotes
    is kept as text. */
template <class H, class Base = KxSipParameterHeader<H>>
class KxSipMediaTypeHeader : public Base {
public:
    const KxString& getType() const { return m_type; }
    const KxString& getSubType() const { return m_subType; }
    /** The parameters stay. Replaces a value that was kept as text, too. Throws KxSipParseError if a text is empty or
        contains CR, LF or NUL; the header is then unchanged. */
    void setMediaType(KxSipAnyText type, KxSipAnyText subType) {
        KxString newType = type.needed("media type");
        m_subType = subType.needed("media subtype");
        m_type = std::move(newType);
        if constexpr (requires { this->forgetText(); }) {
            this->forgetText();
        }
    }
    /** Whether type and subtype are these. Letter case is ignored, and the parameters are. [RFC 3261 7.3.1] */
    [[nodiscard]] bool isMediaType(KxSipText type, KxSipText subType) const {
        return !m_type.empty() && m_type.equalsNoCase(type.view()) && m_subType.equalsNoCase(subType.view());
    }
    /** Type, "/" and subtype, as a new string. */
    [[nodiscard]] KxString getMediaType() const {
        KxString text(
            KxStringBuffer::sCreate(m_type.c_str(), m_type.length(), m_type.length() + m_subType.length() + 1));
        text.append("/").append(m_subType.view());
        return text;
    }

protected:
    KxSipMediaTypeHeader() = default;
    /** Stored as given, unchecked; null reads as empty. */
    KxSipMediaTypeHeader(const char* type, const char* subType)
        : m_type(type == nullptr ? "" : type), m_subType(subType == nullptr ? "" : subType) {}
    KxSipMediaTypeHeader(KxSipText type, KxSipText subType)
        : m_type(type.needed("media type")), m_subType(subType.needed("media subtype")) {}
    KxSipMediaTypeHeader(const KxSipMediaTypeHeader&) = default;

    void forgetValue() {
        m_type = m_subType = KxString("");
        this->m_parameters.clear();
    }

    KxString m_type;
    KxString m_subType;

private:
    friend class KxSipHeaderOf<H>;

    static constexpr KxCharSet kSlash{"/"};
    static constexpr const char* kInvalid = "Invalid Accept header";

    KxSipFault parseValue(KxSipLine& line) {
        if (KxSipGrammar::sReadsParametersStrictly()) [[unlikely]] {
            return parseStrictly(line);
        }
        const std::string_view whole = line.window();
        m_type = KxString(KxAscii::trim(line.token(kSlash)));
        line.read();
        m_subType = KxString(line.token(KxSipHeader::sDelimeters));
        if (m_type.empty() || m_subType.empty()) {
            return KxSipFault(kInvalid);
        }
        if (KxStreamTokenizer::sDiscardWhite(line) == ';') {
            line.read();
            const std::string_view parameters = line.until<','>();
            if constexpr (requires { H::kHidesCommas; }) {
                if (line.peek() == ',' && parameters.find('"') != std::string_view::npos &&
                    whole.data() + H::sTextOf(whole).size() != parameters.data() + parameters.size()) {
                    return KxSipFault(kInvalid);
                }
            }
            if (!KxAscii::trim(parameters).empty()) {
                this->m_parameters.write().parse(parameters, line.readableEnd());
            }
        }
        return {};
    }
    [[gnu::noinline]] KxSipFault parseStrictly(KxSipLine& line) {
        const std::string_view type = line.token(KxSipHeader::sDelimeters);
        const bool hasSlash = KxStreamTokenizer::sDiscardWhite(line) == '/';
        line.consume(hasSlash ? 1 : 0);
        const std::string_view subType = line.token(KxSipHeader::sDelimeters);
        if (!hasSlash || type.empty() || subType.empty()) {
            return KxSipFault(kInvalid);
        }
        const KxSipFault fault = KxSipParameterText::sRead(line, this->m_parameters);
        if (!fault) {
            m_type = KxString(type);
            m_subType = KxString(subType);
        }
        return fault;
    }
    void serializeValue(KxOutputStream& out) const {
        out.writeAll(m_type, '/', m_subType);
        this->serializeParameters(out);
    }
};
