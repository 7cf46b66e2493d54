#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** P-Early-Media: in which directions early media is authorized, and whether the sender knows this header. One object
    per parameter.
    P-Early-Media = "P-Early-Media" HCOLON [ em-param *(COMMA em-param) ]     [RFC 5009 8]
    em-param = "sendrecv" / "sendonly" / "recvonly" / "inactive" / "gated" / "supported" / token
    "P-Early-Media: sendrecv ,gated" -> two values, two lines out */
class KX_HEADERS_API KxSipPEarlyMediaHeader final : public KxSipPlainTokenHeader<KxSipPEarlyMediaHeader> {
public:
    /** @param parameter such as "supported" or "sendrecv". Throws KxSipParseError if it is no token. */
    explicit KxSipPEarlyMediaHeader(KxSipText parameter) : KxSipPlainTokenHeader(parameter) {}

    /** The parameter, in any letter case. */
    const KxString& getEMParam() const { return m_value; }
    void setEMParam(KxSipText parameter) { setTokenText(parameter); }
    [[nodiscard]] bool isEMParam(std::string_view name) const { return m_value.equalsNoCase(name); }
    /** Whether it says that the client, or a proxy on its side, knows this header. */
    [[nodiscard]] bool isSupported() const { return isEMParam("supported"); }
    /** Whether it says that an element on the way already holds back early media that is not authorized. */
    [[nodiscard]] bool isGated() const { return isEMParam("gated"); }
    /** Whether it is a direction: "sendrecv", "sendonly", "recvonly" or "inactive". */
    [[nodiscard]] bool isDirection() const {
        return isEMParam("sendrecv") || isEMParam("sendonly") || isEMParam("recvonly") || isEMParam("inactive");
    }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPEarlyMediaHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid P-Early-Media header";

private:
    friend class KxSipHeaderOf<KxSipPEarlyMediaHeader>;

    KxSipPEarlyMediaHeader() = default;
};
