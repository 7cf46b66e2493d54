#pragma once

#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/SipApi.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

class KxInputStream;
class KxOutputStream;

/** A URI of any scheme, kept as its scheme and the text behind the colon; base of the URIs whose scheme is known
    (KxSipURL, KxTelURL).
    absoluteURI = scheme ":" ( hier-part / opaque-part )                      [RFC 3261 25.1]
    Used by one thread at a time. */
class KX_SIP_API KxURI : public KxObject {
public:
    using Creator = KxURI* (*)();

    /** Null reads as no scheme. */
    explicit KxURI(const char* scheme);
    /** Not assignable: the class of a URI is that of its scheme. */
    KxURI& operator=(const KxURI&) = delete;
    ~KxURI() override;
    KxURI* clone() const override;

    virtual bool hasParameters() const;
    virtual bool hasHeaders() const;
    /** The printed form. */
    virtual KxString getString() const;
    /** Reads one URI; a "<" in front and a ">" behind are consumed, a line end is left.
        Throws KxException "INVALID URI" where no colon follows the scheme. */
    virtual void parse(KxInputStream& in);
    /** As above from a text; null reads as empty. */
    void parse(const char* text);

    /** Writes the printed form. */
    void serialize(KxOutputStream& out) const { display(out, false); }
    /** The same; by getString unless a class knows how to do without the string. */
    void display(KxOutputStream& out, bool verbose) const override;

    KX_MEM_ACCOUNT_OPERATORS(s_account);

    const KxString& getScheme() const { return m_Scheme; }
    const KxString& getSchemeData() const { return m_SchemeData; }
    /** True exactly for a KxSipURL. */
    bool isSipURL() const { return m_isSipURL; }

    /** Scheme and text, byte by byte. */
    bool operator==(const KxURI& other) const;

    /** Registers the class of a scheme, letter case ignored; the first registration is kept. For start-up, before a
        second thread reads: `scheme` must live as long as the process. The creator returns a new empty object, whose
        virtual parse is given the whole URI and may throw; the class overrides clone. The schemes that begin with
        "sip" and "tel" are the library's own. */
    static void sAddConstructor(const char* scheme, Creator creator);

    /** Reads a URI of the class that its first three letters name: "sip" a KxSipURL, "tel" a KxTelURL; anything else
        is of the class that is registered for its scheme, or a KxURI. With `standalone` the parameters behind a SIP URL without angle brackets are its own; without, they
        belong to the header it stands in. Throws what the class's parse throws. */
    static KxHandle<KxURI> sConstructFrom(KxInputStream& in, bool standalone);
    /** As sConstructFrom, but what is wrong is told, not thrown (unless a host's class throws); the handle then stays
        as it was. A step of a grammar: it goes by the log levels of the operation that it is part of. */
    static KxSipFault sRead(KxInputStream& in, bool standalone, KxHandle<KxURI>& uri);

protected:
    KxURI(const KxURI& other);
    KxURI(const KxString& scheme, bool isSipURL) : m_isSipURL(isSipURL), m_Scheme(scheme) {}

    bool m_isSipURL = false;
    bool m_standalone = false;
    KxString m_SchemeData;
    KxString m_Scheme;

private:
    friend class KxSipRequest;

    static Oskan::MemAccount s_account;
    /** An empty URI of the class that is registered for the scheme, or a KxURI of that scheme. */
    static KxHandle<KxURI> sConstruct(std::string_view scheme);
    template <class T>
    static KxSipFault sReadAs(KxInputStream& in, KxHandle<T> read, KxHandle<KxURI>& uri);
    static KxSipFault sReadWhole(KxInputStream& in, bool standalone, KxHandle<KxURI>& uri, const char*& what);
    static KxSipFault sReadOther(KxInputStream& in, std::string_view scheme, bool standalone, KxHandle<KxURI>& uri);
    static KxSipFault sReadLogged(KxInputStream& in, bool standalone, KxHandle<KxURI>& uri);
    KxSipFault read(KxInputStream& in);
    void setScheme(const KxString& scheme) { m_Scheme = scheme; }
    void setSchemeData(const KxString& data) { m_SchemeData = data; }
};

/** Writes the printed form; nothing for nil. */
KX_SIP_API KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxURI>& uri);
