#pragma once

#include "sipheaders/HeadersApi.h"
#include "sipheaders/KxSipReceivedHeader.h"
#include "sipobject/KxSipText.h"

/** The headers whose values are priorities of resources:
    r-value = namespace "." r-priority; both are tokens without a dot          [RFC 4412 3.1]
    A class H defines the error for another value:

        static constexpr const char* kInvalid = "..."; */
template <class H>
class KxSipResourceValueHeader : public KxSipReceivedHeader<H> {
public:
    /** Throws KxSipParseError unless both are tokens without a dot. */
    KxSipResourceValueHeader(KxSipText space, KxSipText priority)
        : m_namespace(sPart(space)), m_priority(sPart(priority)) {}

    /** The set of priorities that the priority is from, such as "dsn", "q735", "ets" or "wps". */
    const KxString& getNamespace() const { return m_namespace; }
    /** Throws KxSipParseError unless it is a token without a dot. */
    void setNamespace(KxSipText space) { m_namespace = sPart(space); }
    /** In any letter case. */
    [[nodiscard]] bool isNamespace(std::string_view name) const { return m_namespace.equalsNoCase(name); }
    /** Such as "flash" or "0". Its rank depends on the namespace. [RFC 4412 10] */
    const KxString& getPriority() const { return m_priority; }
    /** Throws KxSipParseError unless it is a token without a dot. */
    void setPriority(KxSipText priority) { m_priority = sPart(priority); }
    /** In any letter case. */
    [[nodiscard]] bool isPriority(std::string_view name) const { return m_priority.equalsNoCase(name); }

protected:
    KxSipResourceValueHeader() = default;
    KxSipResourceValueHeader(const KxSipResourceValueHeader&) = default;

private:
    friend class KxSipHeaderOf<H>;

    static constexpr KxCharSet kPartEnd = KxSipHeader::sDelimeters | KxCharSet(".");

    static KxString sPart(KxSipText text) {
        KxString part = text.needed(H::sToken);
        KxSipLine line(part.view());
        if (line.until(kPartEnd) != part.view()) {
            KxSipFault(H::kInvalid).raiseIfAny();
        }
        return part;
    }
    KxSipFault parseValue(KxSipLine& line) {
        const std::string_view space = line.token(kPartEnd);
        const bool hasDot = line.read() == '.';
        const std::string_view priority = line.until(kPartEnd);
        if (space.empty() || !hasDot || priority.empty() || line.peek() == '.') {
            return KxSipFault(H::kInvalid);
        }
        m_namespace = KxString(space);
        m_priority = KxString(priority);
        return {};
    }
    void serializeValue(KxOutputStream& out) const { out.writeAll(m_namespace, '.', m_priority); }

    KxString m_namespace;
    KxString m_priority;
};
