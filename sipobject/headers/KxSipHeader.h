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

/** Base of every SIP header: the name it is written under, the link to the next value of the same header, and its
    kind. It reads lines (folding, names, commas) and writes them; a class below it knows the grammar of one value and
    nothing else.

    A line of several comma-separated values becomes a chain of objects of one class; a chain is written as one line a
    value. Headers are made by the registry or by the classes' own constructors, held through KxHandle, and used by one
    thread at a time. A header is part of one message at most: see KxSipMessage::addHeader. [RFC 3261 7.3] */
class KX_SIP_API KxSipHeader : public KxObject {
public:
    /** Makes an empty header of a class. */
    using Creator = KxSipHeader* (*)();

    /** Not assignable: a header hangs in a chain, and owns what its class holds. Copy it. */
    KxSipHeader& operator=(const KxSipHeader&) = delete;
    ~KxSipHeader() override {
        if (!m_next.isNil()) {
            releaseChain();
        }
    }

    /** The full name of the class, "Via". */
    virtual const KxString& getExpandedToken() const = 0;
    /** The compact name, "v", or the full one where there is none. [RFC 3261 7.3.3] */
    virtual const KxString& getCompactToken() const;

protected:
    /** Reads one value; the stream stands behind the colon or comma and ends with the line. Stops at a top-level comma,
        which stays unread, or at the end. Throws KxSipParseError. */
    virtual void doParse(KxInputStream& in) = 0;
    /** Writes one value, without name, colon or line end. */
    virtual void doSerialize(KxOutputStream& out) const = 0;
    /** As doParse, but may tell what is wrong instead of throwing it, as the classes of the library do. */
    virtual KxSipFault readValue(KxInputStream& in);

public:
    /** Reads one header line, with its continuation lines, from the start of a line; the values chained behind each
        other. A name that is not registered gives a KxSipUnknownHeader. The line is consumed whatever happens.
        Throws KxSipParseError ("Header token expected", "SIP Header parse error : no colon found"),
        KxSipParseErrorEmptyHeader ("SIP Header parse error : nothing after the colon") and what the class throws. */
    static KxHandle<KxSipHeader> sConstructFrom(KxInputStream& in);

    /** Registers a name, letter case ignored; the first registration stands. For static initialisers: `name` must
        live as long as the process. */
    static void sAddConstructor(const char* name, Creator creator);

    /** All names that are registered, compact ones too, in no order. They live as long as the process. */
    static std::vector<std::string_view> sNames();

    /** Reads one header line into this object and its chain. Throws as sConstructFrom. */
    void parse(KxInputStream& in);
    /** Writes this value and all behind it, one line each. */
    void serialize(KxOutputStream& out) const;

    void display(KxOutputStream& out, bool verbose) const override;

    /** The next value of the same header; nil at the end. */
    const KxHandle<KxSipHeader>& getNext() const { return m_next; }
    /** The name that is written: as it stood in the input, or the full name. */
    const KxString& getToken() const { return m_token; }

    HeaderID getHeaderID() const { return m_headerID; }
    /** @param id 65535 at most. */
    void setHeaderID(HeaderID id) {
        OSKAN_ASSERT(id <= UINT16_MAX);
        m_headerID = static_cast<std::uint16_t>(id);
    }

    KX_MEM_ACCOUNT_OPERATORS(s_account);

protected:
    /** Separators of RFC 3261 tokens (25.1), control characters aside. */
    static constexpr KxCharSet sDelimeters{" \t\r\n\\\"()<>@,;:/[]?={}"};

    explicit KxSipHeader(const KxString& token) : m_token(token) {}
    explicit KxSipHeader(HeaderID id) : KxSipHeader(KxString(""), id) {}
    KxSipHeader(const KxString& token, HeaderID id) : m_headerID(static_cast<std::uint16_t>(id)), m_token(token) {}
    /** A copy stands alone: it never takes the rest of the chain along. */
    KxSipHeader(const KxSipHeader& other) : KxObject(other), m_headerID(other.m_headerID), m_token(other.m_token) {}

    /** Appends at the end of the chain; a copy where the header is part of a message already. */
    void addNext(KxHandle<KxSipHeader> header);

private:
    friend class KxSipHeaderSlots;
    friend class KxSipMessage;
    friend class KxSipRequest;

    struct Line;
    template <bool kTraced>
    static KxHandle<KxSipHeader> sConstruct(const Line& line, bool& named);
    /** An empty header of the class that goes by the name. */
    static KxHandle<KxSipHeader> sConstruct(std::string_view name);
    static KxHandle<KxSipHeader> sMakeUnknown(std::string_view name);
    /** As sConstructFrom, but what is wrong is told, not thrown; the handle, which must be nil, then stays so. What was
        read is marked as part of a message. */
    static KxSipFault sReadFrom(KxInputStream& in, KxHandle<KxSipHeader>& header);
    static KxSipFault sReadTraced(KxInputStream& in, KxHandle<KxSipHeader>& header);
    template <bool kTraced>
    static KxSipFault sRead(KxInputStream& in, KxHandle<KxSipHeader>& header);
    template <bool kTraced>
    static KxSipFault sReadUnplain(KxInputStream& in, KxHandle<KxSipHeader>& header);
    template <bool kTraced>
    static KxSipFault sMake(const Line& line, KxHandle<KxSipHeader>& header);

    /** As serialize, within an operation that is open. */
    void serializeLines(KxOutputStream& out) const;

    bool isInMessage() const { return m_inMessage.load(std::memory_order_relaxed); }
    void setInMessage(bool isPart) { m_inMessage.store(isPart, std::memory_order_relaxed); }
    /** Makes the value, which must be free, part of a message, and its chain with it where all of that is free; else
        the chain is cut off. */
    void joinMessage() {
        setInMessage(true);
        if (!m_next.isNil()) [[unlikely]] {
            joinChain();
        }
    }
    void joinChain();
    /** Says that the value and its chain are free again: their message has let them go. */
    void leaveMessage();
    /** Changes whenever the name of a header that is part of a message does, or such a header gets further values. */
    static std::uint32_t sChanges() { return s_changes.load(std::memory_order_relaxed); }
    void noteChange() const {
        if (isInMessage()) {
            s_changes.fetch_add(1, std::memory_order_relaxed);
        }
    }

    KxSipHeader& lastOfChain();
    void releaseChain();
    void parseWhole(KxInputStream& in);
    template <bool kTraced>
    KxSipFault parseLine(const Line& line, bool named);
    template <bool kTraced>
    KxSipFault parseValues(KxInputStream& in);
    void parseRest(KxInputStream& in);
    template <bool kTraced>
    KxSipFault parseFurther(KxInputStream& in, const char* comma);
    void setToken(std::string_view name);

    static Oskan::MemAccount s_account;
    static std::atomic<std::uint32_t> s_changes;

    std::uint16_t m_headerID = KxHeaderIDs::kNone; // first: these two fill the gap after the reference count
    std::atomic<bool> m_inMessage{false};
    KxString m_token;
    KxHandle<KxSipHeader> m_next;
};
