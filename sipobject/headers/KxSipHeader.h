#pragma once

#include "core/Assertion.h"
#include "core/MemAccount.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/SipApi.h"
#include "sipobject/headers/HeaderID.h"
#include "util/KxCharSet.h"
#include "util/KxHandle.h"
#include "util/KxString.h"

#include <atomic>
#include <cstdint>
#include <string_view>
#include <vector>

class KxInputStream;
class KxOutputStream;
class KxSipLine;

/** Base of every SIP header: the name it is written under, the link to the next value of the same header, and its
    kind. It reads and writes whole lines (folding, names, commas); a derived class defines only the grammar of one
    value.

    A line of several comma-separated values becomes a chain of objects of one class; a chain is written as one line per
    value. Headers are created by the registry or by the constructors of their classes, held through KxHandle, and used
    by one thread at a time. A header is part of at most one message: see KxSipMessage::addHeader. [RFC 3261 7.3] */
class KX_SIP_API KxSipHeader : public KxObject {
public:
    /** Creates an empty header of a class. */
    using Creator = KxSipHeader* (*)();

    /** Not assignable, since a header is part of a chain and owns its data. Use the copy constructor or clone. */
    KxSipHeader& operator=(const KxSipHeader&) = delete;
    ~KxSipHeader() override {
        if (!m_next.isNil()) {
            releaseChain();
        }
    }

    /** The full header name, such as "Via". */
    virtual const KxString& getExpandedToken() const = 0;
    /** The compact name, such as "v", or the full name if there is none. [RFC 3261 7.3.3] */
    virtual const KxString& getCompactToken() const;

protected:
    /** Reads one value. The stream is positioned after the colon or comma and ends with the line. Reading stops at a
        top-level comma, which stays unread, or at the end. Throws KxSipParseError. */
    virtual void doParse(KxInputStream& in) = 0;
    /** Writes one value without name, colon or line end. */
    virtual void doSerialize(KxOutputStream& out) const = 0;
    /** As doParse, but may return the fault instead of throwing it, as the library's own classes do. */
    virtual KxSipFault readValue(KxSipLine& line);

public:
    /** Returns the first value of one header line, with the other values chained after it. Reads from the start of a
        line and includes continuation lines. A name that is not registered gives a KxSipUnknownHeader. The line is
        consumed even if this throws.
        Throws KxSipParseError ("Header token expected", "SIP Header parse error : no colon found"),
        KxSipParseErrorEmptyHeader ("SIP Header parse error : nothing after the colon") and the errors of the class. */
    static KxHandle<KxSipHeader> sConstructFrom(KxInputStream& in);

    /** Registers a name, ignoring letter case; the first registration of a name is kept. For static initialisers:
        `name` must live as long as the process. */
    static void sAddConstructor(const char* name, Creator creator);

    /** As above, for a name that only the RFC grammar knows, unless it is registered for both. */
    static void sAddRFCConstructor(const char* name, Creator creator);

    /** All registered names, including compact ones, in no particular order. They live as long as the process. */
    [[nodiscard]] static std::vector<std::string_view> sNames();

    /** A new identifier, KxHeaderIDs::kCount or more, for a header class of a host's own. For static initialisers: see
        KxSipHeaderOf. May be called by several threads.
        Throws KxException "No header identifier is left" after KxHeaderIDs::kLast. */
    static HeaderID sNewHeaderID(KxSipHeaderUse use = KxSipHeaderUse::List);
    /** Whether a header of a message may have this identifier: below KxHeaderIDs::kCount, or from sNewHeaderID. */
    static bool sIsHeaderID(HeaderID id);

    /** Reads one header line into this object and its chain. Throws as sConstructFrom does; nothing is changed then. */
    void parse(KxInputStream& in);
    /** Writes this value and all values after it, one line each. */
    void serialize(KxOutputStream& out) const;

    /** This value as it is written, without name and line end. */
    KxString getValueText() const;

    void display(KxOutputStream& out, bool verbose) const override;

    /** The next value of the same header; nil at the end. */
    const KxHandle<KxSipHeader>& getNext() const { return m_next; }
    /** The name that is written: the name as received, or the full name. */
    const KxString& getToken() const { return m_token; }

    HeaderID getHeaderID() const { return m_headerID; }
    /** For a header that is part of no message.
        @param id at most 65535. A message takes only headers for which sIsHeaderID is true; others abort the process. */
    void setHeaderID(HeaderID id) {
        OSKAN_ASSERT(id <= UINT16_MAX);
        m_headerID = static_cast<std::uint16_t>(id);
    }

    KX_MEM_ACCOUNT_OPERATORS(s_account);

protected:
    /** The separators of tokens. Of the control characters only tab, CR and LF are included. [RFC 3261 25.1] */
    static constexpr KxCharSet sDelimeters{" \t\r\n\\\"()<>@,;:/[]?={}"};

    explicit KxSipHeader(const KxString& token) : m_token(token) {}
    explicit KxSipHeader(HeaderID id) : KxSipHeader(KxString(""), id) {}
    KxSipHeader(const KxConstString& token, HeaderID id) : m_headerID(static_cast<std::uint16_t>(id)), m_token(token) {}
    KxSipHeader(const KxString& token, HeaderID id) : m_headerID(static_cast<std::uint16_t>(id)), m_token(token) {}
    /** Copies this value only, not the rest of its chain. */
    KxSipHeader(const KxSipHeader& other) : KxObject(other), m_headerID(other.m_headerID), m_token(other.m_token) {}

    /** Appends the header at the end of the chain, or a copy if the header is already part of a message. */
    void addNext(KxHandle<KxSipHeader> header);

private:
    friend class KxSipHeaderSlots;
    friend class KxSipLineValues;
    friend class KxSipMessageReader;
    friend class KxSipPartText;
    friend class KxSipRequest;

    static constexpr KxSipFault kNothingAfterColon{"SIP Header parse error : nothing after the colon",
                                                   KxSipFault::Error::EmptyHeader};
    static constexpr KxSipFault kTextAfterValue{"SIP Header parse error : text after the value"};

    /** As the public sConstructFrom, but returns the fault instead of throwing it; `line` is the context. `header` must
        be nil, and stays nil if there is a fault; unless the line is to be read twice, and all its values are in the
        header, some of them as text. The headers that were read are marked as part of a message. */
    static KxSipFault sConstructFrom(KxInputStream& in, KxSipLine& line, KxHandle<KxSipHeader>& header);
    /** Returns a header with this name and the values in the text after the colon. Throws as sConstructFrom does. */
    static KxHandle<KxSipHeader> sConstructFrom(std::string_view name, std::string_view value);
    // In the following functions, Scope is NoTraceScope where the logger of this class is known not to trace.
    template <class Scope>
    static KxSipFault sReadLine(KxInputStream& in, KxSipLine& line, KxHandle<KxSipHeader>& header);
    static KxSipFault sReadLineTraced(KxInputStream& in, KxSipLine& line, KxHandle<KxSipHeader>& header);
    /** Creates an empty header by the function registered for the name; null gives a KxSipUnknownHeader. The caller
        takes over its first reference. */
    template <class Scope>
    static KxSipHeader& sConstruct(std::string_view name, Creator creator);
    static KxSipHeader& sConstructUnknown(std::string_view name);
    /** An empty header of the class that is registered for the name; nil if there is none. */
    static KxHandle<KxSipHeader> sSample(std::string_view name);
    /** Creates an empty header of the class that the name selects. */
    static KxHandle<KxSipHeader> sMake(std::string_view name);
    /** Reads the line that was taken again, value by value. */
    static KxSipFault sReadByValue(const KxSipLine& line, KxHandle<KxSipHeader>& header);
    /** Reads the name and the values of the line that was taken.
        @param known the text of the name, if it is the registered one or that of this header; else null. */
    template <class Scope>
    KxSipFault parse(KxSipLine& line, const char* known);
    /** Reads the values in the line, the first one into this object. */
    template <class Scope>
    KxSipFault parseRest(KxSipLine& line);
    KxSipFault parseValues(KxSipLine& line);
    /** Reads the rest of the line, after its first value; exactly, or skipping what is between values and commas. */
    template <bool kIsExact, class Scope>
    KxSipFault parseFurther(KxSipLine& line);
    void setToken(std::string_view name);

    /** As serialize, within an operation that is open. */
    void serializeLines(KxOutputStream& out) const;
    /** As serializeLines, without the trace scope and the end of the last line. Unless `isFirst`, which is then false,
        writes the end of the line before. A template, so that this file needs no KxOutputStream. */
    template <class Out>
    [[gnu::always_inline]] void writeLines(Out& out, bool& isFirst) const {
        for (const KxSipHeader* value = this; value != nullptr; value = value->m_next.get()) {
            if (isFirst) {
                out.writeAll(value->m_token, std::string_view(": ", 2));
                isFirst = false;
            } else {
                out.writeAll(std::string_view("\r\n", 2), value->m_token, std::string_view(": ", 2));
            }
            value->doSerialize(out);
        }
    }
    /** Whether serializeLines has a trace scope that is on. */
    static bool sTracesLines();

    bool isInMessage() const { return m_inMessage.load(std::memory_order_relaxed); }
    void setInMessage(bool isPart) { m_inMessage.store(isPart, std::memory_order_relaxed); }
    /** Marks this value, which must not be part of a message, as part of one. Does the same with its chain if no value
        of it is part of a message; otherwise the chain is cut off. */
    void joinMessage() {
        setInMessage(true);
        if (!m_next.isNil()) [[unlikely]] {
            joinChain();
        }
    }
    void joinChain();
    /** Marks this value and its chain as no longer part of a message. */
    void leaveMessage();
    /** A counter that changes whenever a header that is part of a message changes its name or gets further values. */
    static std::uint32_t sChanges() { return s_changes.load(std::memory_order_relaxed); }
    void noteChange() const {
        if (isInMessage()) {
            s_changes.fetch_add(1, std::memory_order_relaxed);
        }
    }

    KxSipHeader& lastOfChain();
    void releaseChain();

    static Oskan::MemAccount s_account;
    static std::atomic<std::uint32_t> s_changes;

    std::uint16_t m_headerID = KxHeaderIDs::kNone; // first: these two fill the gap after the reference count
    std::atomic<bool> m_inMessage{false};
    KxString m_token;
    KxHandle<KxSipHeader> m_next;
};
