#pragma once

#include "sipheaders/HeadersApi.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/KxSipText.h"
#include "util/KxSharedParameters.h"

#include <vector>

/** Privacy: what the sender wants to be hidden from the other side. One object has all its values.
    Privacy-hdr = "Privacy" HCOLON priv-value *(";" priv-value)               [RFC 3323 4.2]
    priv-value = "header" / "session" / "user" / "none" / "critical" / "id" [RFC 3325 9.3] / "history" [RFC 7044] /
                 token
    Commas between the values are read, too.      "Privacy: id; critical" -> the same */
class KX_HEADERS_API KxSipPrivacyHeader final : public KxSipReceivedHeader<KxSipPrivacyHeader> {
public:
    /** A header with one value. Throws as add does. */
    explicit KxSipPrivacyHeader(KxSipText value) { add(value); }

    /** The values in their order, without repetitions; never empty. */
    std::vector<KxString> getValues() const;
    /** Ignores letter case. */
    [[nodiscard]] bool has(std::string_view value) const { return m_values.isPresent(value); }
    /** Adds a value at the end, unless it is there. Throws KxSipParseError if it is no token. */
    void add(KxSipText value);
    /** Returns false, without a change, if the value is absent, or if there is no other: remove the header then. */
    bool remove(std::string_view value);

    /** Whether no privacy at all is wanted, also none that a proxy would give by itself. */
    [[nodiscard]] bool isNone() const { return has("none"); }
    /** Whether the request is to be refused if a proxy can't give the privacy. */
    [[nodiscard]] bool isCritical() const { return has("critical"); }
    /** Whether P-Asserted-Identity is to be removed before the message leaves the trusted network. [RFC 3325 9.3] */
    [[nodiscard]] bool isID() const { return has("id"); }
    /** Whether History-Info is to be hidden. [RFC 7044] */
    [[nodiscard]] bool isHistory() const { return has("history"); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipPrivacyHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipPrivacyHeader>;

    KxSipPrivacyHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxSharedParameters m_values; ///< Names without values: a list that finds them, however many there are.
};
