#pragma once

#include "sipheaders/KxSipTextParameterHeader.h"

#include <string>

/** User-to-User: data that the applications of the two ends pass to each other, such as the UUI of an ISDN. One object
    per piece of data.
    UUI = "User-to-User" HCOLON uui-value *(COMMA uui-value)                  [RFC 7433 4.1]
    uui-value = ( token / quoted-string ) *(SEMI uui-param)
    uui-param = ( "purpose" / "content" / "encoding" ) EQUAL ( token / quoted-string ) / generic-param
    Data without quotes may have any characters but white space, quotes, "<", ">", "," and ";".
    "User-to-User: 56a390f3;encoding=hex ;purpose=isdn-uui" -> the same */
class KX_HEADERS_API KxSipUserToUserHeader final : public KxSipTextParameterHeader<KxSipUserToUserHeader> {
public:
    /** As setData. */
    explicit KxSipUserToUserHeader(KxSipText data) { setData(data); }
    /** A header with the bytes, as setBytes writes them. */
    [[nodiscard]] static KxHandle<KxSipUserToUserHeader> sOfBytes(std::string_view bytes);

    /** The data as text, without quotes and escapes. */
    KxString getData() const { return KxSipParameterValue::sText(m_data); }
    /** Throws KxSipParseError if the text contains CR, LF or NUL. */
    void setData(KxSipText data) { m_data = KxSipParameterValue::sTokenOrQuoted(data); }
    /** The bytes that the data encodes; none if the encoding is another than "hex", or the data no pairs of hexadecimal
        digits. */
    std::optional<std::string> getBytes() const;
    /** Writes the bytes as hexadecimal digits, and sets the encoding. */
    void setBytes(std::string_view bytes);

    /** The application that uses the data ("package"), such as "isdn-uui"; nil when absent, which means "isdn-uui".
        [RFC 7434] */
    KxString getPurpose() const { return text("purpose"); }
    void setPurpose(KxSipText purpose) { setText("purpose", purpose); }
    [[nodiscard]] bool isPurpose(std::string_view name) const { return getPurpose().equalsNoCase(name); }
    /** What the application says the data is; nil when absent. */
    KxString getContent() const { return text("content"); }
    void setContent(KxSipText content) { setText("content", content); }
    /** "hex" or another; nil when absent, which means "hex". [RFC 7434] */
    KxString getEncoding() const { return text("encoding"); }
    void setEncoding(KxSipText encoding) { setText("encoding", encoding); }
    [[nodiscard]] bool isHex() const;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipUserToUserHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipUserToUserHeader>;

    KxSipUserToUserHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxString m_data; ///< As it is written.
};
