#pragma once

#include "sipheaders/KxSipAddressFieldHeader.h"
#include "sipheaders/KxSipReasonHeader.h"

#include <vector>

/** History-Info: a target to which the request was sent, and how it came to that target. One object per target.
    History-Info = "History-Info" HCOLON hi-entry *(COMMA hi-entry)           [RFC 7044 5]
    hi-entry = name-addr *(SEMI ( hi-index / hi-target-param / generic-param ))
    hi-index = "index" EQUAL index-val; index-val = number *("." number)
    hi-target-param = ( "rc" / "mp" / "np" ) EQUAL index-val
    The index is mandatory, but a value without it is read, too. Why the request left the target, and that the target is
    to be hidden, are headers of the URL: Reason and Privacy.
    "History-Info: <sip:a@h?Reason=SIP%3Bcause%3D302>;index=1 ,<sip:b@h>;index=1.1;mp=1" -> two values */
class KX_HEADERS_API KxSipHistoryInfoHeader final : public KxSipAddressFieldHeader<KxSipHistoryInfoHeader> {
public:
    using KxSipAddressFieldHeader::KxSipAddressFieldHeader;
    /** Holds a copy of the URL. Throws KxSipParseError for an index that setIndex refuses. */
    KxSipHistoryInfoHeader(const KxHandle<KxSipURL>& url, KxSipText index) : KxSipHistoryInfoHeader(url) {
        setIndex(index);
    }

    /** The place in the history, such as "1.2"; nil when absent. */
    KxString getIndex() const { return getParameter("index"); }
    /** The numbers of the index, such as 1 and 2; none if it is absent or no index. */
    std::vector<std::uint32_t> getIndexNumbers() const { return sNumbers(getIndex().view()); }
    /** Throws KxSipParseError "Invalid History-Info index" unless it is numbers with dots between them. */
    void setIndex(KxSipText index) { setParameter("index", sIndex(index)); }
    /** The index of a target to which this one sent the request: {1.2} gives "1.2.1", or for the third of several
        targets "1.2.3". Nil if this value has no index. [RFC 7044 10.3] */
    KxString getChildIndex(std::uint32_t number = 1) const;
    /** The index of the target that is tried after this one: {1.2} gives "1.3". Nil if this value has no index, or the
        number would be too large. */
    KxString getSiblingIndex() const;

    /** How the target came from an earlier one: "rc" for the same user, such as by a contact that was registered, "mp"
        for another user, "np" for no change; nil when absent. The first one counts. [RFC 7044 5] */
    KxString getHiTargetParam() const;
    /** The index of that earlier target; nil when absent. */
    KxString getHiTargetIndex() const { return getParameter(getHiTargetParam().view()); }
    /** Removes the others of the three. Throws KxSipParseError for another name and for text that is no index. */
    void setHiTargetParam(KxSipText name, KxSipText index);
    void removeHiTargetParam();

    /** The reasons why the request left the target, as a new chain; nil if there is none, it can't be read, or the URI
        is no SIP URL. */
    KxHandle<KxSipReasonHeader> getReason() const;
    /** Replaces the reasons by this value and those after it. Throws KxSipParseError if the URI is no SIP URL. */
    void setReason(const KxSipReasonHeader& reason);
    void removeReason() { setURLHeader("Reason", KxString()); }

    /** "history", "none" or another, several with ";" between them; nil if there is none, or the URI is no SIP URL. */
    KxString getPrivacy() const { return getURLHeader("Privacy"); }
    /** No text removes it. Throws KxSipParseError if the URI is no SIP URL, and for CR, LF and NUL. */
    void setPrivacy(KxSipText privacy) { setURLHeader("Privacy", privacy.line()); }
    /** Whether the target is to be hidden: "history" is among the privacy values. [RFC 7044 10.1] */
    [[nodiscard]] bool isPrivate() const;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipHistoryInfoHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipHistoryInfoHeader>;

    KxSipHistoryInfoHeader() = default;

    static std::vector<std::uint32_t> sNumbers(std::string_view index);
    static KxString sIndex(KxSipText index);
    /** All but unreserved characters escaped. [RFC 3261 19.1.1] */
    static KxString sEscaped(std::string_view text);
    /** Without escapes; nil when absent. */
    KxString getURLHeader(const char* name) const;
    /** Nil removes the header. */
    void setURLHeader(const char* name, const KxString& value);
};
