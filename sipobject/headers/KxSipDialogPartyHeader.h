#pragma once

#include "sipobject/headers/KxSipAddressHeader.h"

/** From and To: address headers with a tag. In the classic grammar, their SIP URL has no part that would route a
    request. A class H defines

        static constexpr const char* kInvalid = "...";              // the fault if there is no URI
        static constexpr KxLiteral kTraceAddress, kTraceURL, kTraceText, kTraceCopy;  // names of its constructors */
template <class H>
class KxSipDialogPartyHeader : public KxSipParameterAddressHeader<H> {
public:
    /** The URI as text, whatever its scheme; empty without a URI. */
    KxString getURL() const { return this->m_nameAddress.isNil() ? KxString("") : this->m_nameAddress->getURLString(); }

    /** Nil when absent. [RFC 3261 19.3] */
    KxString getTag() const { return this->m_parameters.getValue(H::sTagToken); }
    [[nodiscard]] bool isTagPresent() const { return this->m_parameters.isPresent(H::sTagToken); }
    /** Null and "" change nothing. */
    void setTag(const char* tag) {
        if (tag != nullptr && *tag != '\0') {
            storeTag(KxString(tag));
        }
    }
    void setTag(KxSipText tag) {
        if (!tag.isNone()) {
            storeTag(tag.line());
        }
    }

    static constexpr const char* sTagToken = "tag";

protected:
    using Base = KxSipParameterAddressHeader<H>;

    KxSipDialogPartyHeader() = default;
    KxSipDialogPartyHeader(const KxHandle<KxSipNameAddress>& address, const KxHandle<KxParameters>& parameters)
        : Base(address, parameters) {
        const Oskan::EntryTraceScope trace(this->sLogger(), KxTraceName<H, H::kTraceAddress>);
    }
    KxSipDialogPartyHeader(const KxHandle<KxSipURL>& url, const KxHandle<KxParameters>& parameters)
        : Base(url, parameters) {
        const Oskan::EntryTraceScope trace(this->sLogger(), KxTraceName<H, H::kTraceURL>);
    }
    KxSipDialogPartyHeader(const KxSipDialogPartyHeader& other) : Base(other) {
        const Oskan::LeafTraceScope trace(this->sLogger(), KxTraceName<H, H::kTraceCopy>);
    }

    void parseTraced(KxSipText text) {
        const Oskan::EntryTraceScope trace(this->sLogger(), KxTraceName<H, H::kTraceText>);
        this->parseText(text);
    }

private:
    friend class KxSipDialog;
    friend class KxSipParameterAddressHeader<H>;

    void storeTag(const KxString& tag) {
        this->m_parameters.write().setValue(H::sTagToken, tag);
        if (!this->m_nameAddress.isNil()) {
            this->m_nameAddress->setBrackets(true);
        }
    }
    /** In the classic grammar only: removes from a URL that has parameters those that only a Request-URI or Contact may
        have, and its headers. A URL without parameters keeps its headers. [RFC 3261 19.1.1, table 1] */
    [[gnu::always_inline]] KxSipFault checkValidity() {
        if (this->m_nameAddress.isNil() || this->m_nameAddress->getURI().isNil()) {
            return KxSipFault(H::kInvalid);
        }
        KxURI& uri = *this->m_nameAddress->getURI();
        if (uri.isSipURL() && static_cast<KxSipURL&>(uri).hasParameters()) {
            auto& url = static_cast<KxSipURL&>(uri);
            url.removeParameter("transport");
            url.removeParameter("maddr");
            url.removeParameter("ttl");
            url.clearHeaders();
        }
        return {};
    }
};
