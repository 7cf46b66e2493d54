#pragma once

#include "sipheaders/KxSipFieldHeader.h"
#include "sipobject/headers/KxSipQValue.h"

/** The headers whose values are security mechanisms for the connection between a client and its first proxy.
    sec-mechanism = mechanism-name *(SEMI mech-parameters)                    [RFC 3329 2.2]
    mechanism-name = "digest" / "tls" / "ipsec-ike" / "ipsec-man" / token
    mech-parameters = "q" EQUAL qvalue / "d-alg" EQUAL token / "d-qop" EQUAL token / "d-ver" EQUAL quoted-string /
                      generic-param
    The mechanism "ipsec-3gpp" has the parameters alg, ealg, prot, mod, spi-c, spi-s, port-c and port-s: "c" is the side
    of the client, "s" that of the server. [3GPP TS 33.203 Annex H]
    Texts are without quotes and escapes, and nil when absent; numbers are none when absent or no number. Setters throw
    KxSipParseError for an empty text or a line end. */
template <class H>
class KxSipSecurityHeader : public KxSipFieldHeader<H> {
public:
    /** @param mechanism such as "tls" or "ipsec-3gpp". Throws KxSipParseError if it is no token. */
    explicit KxSipSecurityHeader(KxSipText mechanism) : KxSipFieldHeader<H>(mechanism) {}

    const KxString& getMechanism() const { return this->m_value; }
    void setMechanism(KxSipText mechanism) { this->setTokenText(mechanism); }
    [[nodiscard]] bool isMechanism(std::string_view name) const { return this->m_value.equalsNoCase(name); }

    /** The preference "q", from 0 to 1000 thousandths. */
    std::optional<std::uint32_t> getPreference() const { return KxSipQValue::sRead(this->getParameter("q").view()); }
    /** Throws KxSipParseError for more than 1000. */
    void setPreference(std::uint32_t thousandths) { this->setParameter("q", KxSipQValue::sWrite(thousandths)); }

    KxString getDigestAlgorithm() const { return this->text("d-alg"); }
    void setDigestAlgorithm(KxSipText algorithm) { this->setText("d-alg", algorithm); }
    KxString getDigestQop() const { return this->text("d-qop"); }
    void setDigestQop(KxSipText qop) { this->setText("d-qop", qop); }
    /** The digest over the Security-Server header: 32 hexadecimal digits. */
    KxString getDigestVerify() const { return this->text("d-ver"); }
    void setDigestVerify(KxSipText digest) { this->setParameter("d-ver", KxSipParameterValue::sQuoted(digest)); }

    /** The integrity algorithm, such as "hmac-sha-1-96". */
    KxString getAlgorithm() const { return this->text("alg"); }
    void setAlgorithm(KxSipText algorithm) { this->setText("alg", algorithm); }
    /** The encryption algorithm, such as "aes-cbc". */
    KxString getEncryptionAlgorithm() const { return this->text("ealg"); }
    void setEncryptionAlgorithm(KxSipText algorithm) { this->setText("ealg", algorithm); }
    /** "esp" or "ah". */
    KxString getProtocol() const { return this->text("prot"); }
    void setProtocol(KxSipText protocol) { this->setText("prot", protocol); }
    /** "trans", "tun" or "UDP-enc-tun". */
    KxString getMode() const { return this->text("mod"); }
    void setMode(KxSipText mode) { this->setText("mod", mode); }
    /** The security parameter indexes and protected ports. */
    std::optional<std::uint32_t> getClientSPI() const { return this->number("spi-c"); }
    void setClientSPI(std::uint32_t spi) { this->setNumber("spi-c", spi); }
    std::optional<std::uint32_t> getServerSPI() const { return this->number("spi-s"); }
    void setServerSPI(std::uint32_t spi) { this->setNumber("spi-s", spi); }
    std::optional<std::uint32_t> getClientPort() const { return this->number("port-c"); }
    void setClientPort(std::uint16_t port) { this->setNumber("port-c", port); }
    std::optional<std::uint32_t> getServerPort() const { return this->number("port-s"); }
    void setServerPort(std::uint16_t port) { this->setNumber("port-s", port); }

protected:
    KxSipSecurityHeader() = default;
    KxSipSecurityHeader(const KxSipSecurityHeader&) = default;
};
