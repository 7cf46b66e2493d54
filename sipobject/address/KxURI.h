#pragma once

#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/KxSipText.h"
#include "sipobject/SipApi.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

#include <concepts>

class KxInputStream;
class KxOutputStream;
class KxSipLine;

/** A URI of any scheme, stored as its scheme and the text after the colon. Base class of the URIs with a known scheme
    (KxSipURL, KxTelURL).
    absoluteURI = scheme ":" ( hier-part / opaque-part )                      [RFC 3261 25.1]
    Used by one thread at a time. */
class KX_SIP_API KxURI : public KxObject {
public:
    using Creator = KxURI* (*)();

    /** A URI with this scheme and no further text; null means no scheme. */
    explicit KxURI(const char* scheme);
    explicit KxURI(KxSipText scheme) : KxURI(scheme.line(), false) {}
    /** Not assignable, since the class of a URI depends on its scheme. */
    KxURI& operator=(const KxURI&) = delete;
    ~KxURI() override = default;
    [[nodiscard]] KxURI* clone() const override;

    [[nodiscard]] virtual bool hasParameters() const;
    [[nodiscard]] virtual bool hasHeaders() const;
    /** The URI as text. */
    virtual KxString getString() const;
    /** Reads one URI; a "<" before it and a ">" after it are consumed, a line end stays unread.
        Throws KxException "INVALID URI" if no colon follows the scheme. */
    virtual void parse(KxInputStream& in);
    /** As parse, but returns the fault instead of throwing it. Not virtual: this is the grammar of a URI of unknown
        scheme. */
    KxSipFault parse(KxSipLine& line);
    /** As parse, from a text; null reads as empty. */
    void parse(const char* text);
    void parse(KxSipText text);

    /** Writes the URI. */
    void serialize(KxOutputStream& out) const { display(out, false); }
    /** As serialize. The default writes getString(); a class may override it to avoid the string. */
    void display(KxOutputStream& out, bool verbose) const override;

    KX_MEM_ACCOUNT_OPERATORS(s_account);

    const KxString& getScheme() const { return m_Scheme; }
    const KxString& getSchemeData() const { return m_SchemeData; }
    /** True exactly for a KxSipURL. */
    [[nodiscard]] bool isSipURL() const { return m_isSipURL; }

    /** The object as a U, for example uri->as<KxSipURL>(); null if it is not a U. Valid as long as the object. */
    template <std::derived_from<KxURI> U>
    [[nodiscard]] U* as() {
        return dynamic_cast<U*>(this);
    }
    template <std::derived_from<KxURI> U>
    [[nodiscard]] const U* as() const {
        return dynamic_cast<const U*>(this);
    }

    /** Compares scheme and text byte by byte, so that any two SIP URLs are equal here: compare them as KxSipURLs. In
        the RFC grammar, URIs of one class compare as that class does, others without the letter case of the scheme. */
    [[nodiscard]] bool operator==(const KxURI& other) const;

    /** Registers the class of a scheme, ignoring letter case; the first registration of a scheme is kept. Call this at
        start-up, before a second thread reads; `scheme` must live as long as the process. The creator returns a new
        empty object, whose virtual parse is given the whole URI and may throw; the class overrides clone. Schemes that
        begin with "sip" and "tel" are reserved for the library. */
    static void sAddConstructor(const char* scheme, Creator creator);

    /** Reads and returns a URI. Its first three letters determine its class: "sip" gives a KxSipURL, "tel" a KxTelURL;
        any other URI has the class registered for its scheme, or KxURI. If `standalone` is true, the parameters after a
        SIP URL without angle brackets belong to the URL; else they belong to the header that contains it. Throws the
        errors of the class's parse. */
    static KxHandle<KxURI> sConstructFrom(KxInputStream& in, bool standalone);
    /** As sConstructFrom, but returns the fault instead of throwing it (an application's own class may still throw);
        `uri` is then unchanged. Part of larger operations: uses the log levels of the operation that it is part of. */
    static KxSipFault sConstructFrom(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri);

protected:
    KxURI(const KxURI& other)
        : KxObject(other),
          m_isSipURL(other.m_isSipURL),
          m_standalone(other.m_standalone),
          m_SchemeData(other.m_SchemeData),
          m_Scheme(other.m_Scheme) {}
    KxURI(const KxString& scheme, bool isSipURL) : m_isSipURL(isSipURL), m_Scheme(scheme) {}
    /** A SIP URL that has one reference, which a handle takes over. */
    KxURI(const KxString& scheme, Held held) : KxObject(held), m_isSipURL(true), m_Scheme(scheme) {}

    bool m_isSipURL = false;
    bool m_standalone = false;
    KxString m_SchemeData;
    KxString m_Scheme;

private:
    bool isEquivalentTo(const KxURI& other) const;
    friend class KxSipRequest;

    static Oskan::MemAccount s_account;
    /** An empty URI of the class registered for the scheme, or a KxURI with that scheme. */
    static KxHandle<KxURI> sConstruct(std::string_view scheme);
    template <bool kStrict>
    static KxSipFault sConstructUsual(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri);
    static KxSipFault sConstructStrictly(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri);
    static KxSipFault sConstructByScheme(KxSipLine& line, bool standalone, KxHandle<KxURI>& uri);
    void setScheme(const KxString& scheme) { m_Scheme = scheme; }
    void setSchemeData(const KxString& data) { m_SchemeData = data; }
};

/** Writes the URI; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxURI>& uri);
