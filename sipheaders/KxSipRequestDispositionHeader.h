#pragma once

#include "sipheaders/KxSipFieldHeader.h"

/** Request-Disposition: what the caller wants servers to do with the request. One object per directive.
    Request-Disposition = ( "Request-Disposition" / "d" ) HCOLON directive *(COMMA directive)   [RFC 3841 10]
    directive = "proxy" / "redirect" / "cancel" / "no-cancel" / "fork" / "no-fork" / "recurse" / "no-recurse" /
                "parallel" / "sequential" / "queue" / "no-queue"
    Any token is accepted.      "d: proxy ,no-fork" -> "d: proxy", "Request-Disposition: no-fork" */
class KX_HEADERS_API KxSipRequestDispositionHeader final : public KxSipPlainTokenHeader<KxSipRequestDispositionHeader> {
public:
    /** Throws KxSipParseError if the directive is no token. */
    explicit KxSipRequestDispositionHeader(KxSipText directive) : KxSipPlainTokenHeader(directive) {}

    const KxString& getDirective() const { return m_value; }
    void setDirective(KxSipText directive) { setTokenText(directive); }
    /** In any letter case. */
    [[nodiscard]] bool isDirective(std::string_view name) const { return m_value.equalsNoCase(name); }

    static const KxConstString sToken;
    static const KxConstString sRFCCompactToken;
    static constexpr char kClassName[] = "KxSipRequestDispositionHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kEmptyError = "Invalid Request-Disposition header";

private:
    friend class KxSipHeaderOf<KxSipRequestDispositionHeader>;

    KxSipRequestDispositionHeader() = default;
};
