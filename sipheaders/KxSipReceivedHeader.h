#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxOutputStream.h"

/** The headers that are written as they were received, blanks, letter case and order included, as long as nobody
    changes the value. The families of header classes are put on top of it, as the Base of the first of them. A value
    that its class can't read is kept as a KxSipUnreadHeader.

    An object tells whether it was changed when it is written: it then compares what it would write with what the text
    it was read from would be written as. So every way to change it counts, handles of its parts included. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipReceivedHeader : public Base {
public:
    /** A header with this value. Throws KxSipParseError if the class can't read it, if there is text after it, or if it
        has CR, LF or NUL. */
    [[nodiscard]] static KxHandle<H> sRead(KxSipText value) {
        KxHandle<KxSipHeader> made = KxHandle<KxSipHeader>::sOfNew(Base::sCreate());
        KxHandle<H> header(static_cast<H*>(made.get()));
        KxSipReceivedHeader& received = *header;
        const Oskan::EntryTraceScope trace(Base::sLogger(), KxTraceName<H, "::doParse">);
        KxSipLine line(value.checked().view());
        line.skipSpace();
        received.readValue(line).raiseIfAny();
        line.skipSpace();
        if (line.peek() >= 0) {
            KxSipFault("SIP Header parse error : text after the value").raiseIfAny();
        }
        return header;
    }

    /** The value as it was received, without blanks around it; empty for a header that was built. */
    const KxString& getReceived() const { return m_received; }

protected:
    using Base::Base;
    KxSipReceivedHeader() = default;
    KxSipReceivedHeader(const KxSipReceivedHeader&) = default;

    KxSipFault readValue(KxSipLine& line) override {
        const std::string_view before = line.window();
        const KxSipFault fault = Base::readValue(line);
        if (!fault) {
            m_received = KxString(sTrimEnd(before.substr(0, before.size() - line.window().size())));
        }
        return fault;
    }
    void doSerialize(KxOutputStream& out) const override {
        isAsReceived() ? out.writeAll(m_received) : Base::doSerialize(out);
    }

private:
    /** Without blanks and line end. Other white space may be the end of a token. */
    static std::string_view sTrimEnd(std::string_view text) {
        while (!text.empty() && KxAscii::isSpace(text.back()) && text.back() != '\f' && text.back() != '\v') {
            text.remove_suffix(1);
        }
        return text;
    }
    bool isAsReceived() const {
        if (m_received.empty()) {
            return false;
        }
        KxByteArrayOutputStream now;
        Base::doSerialize(now);
        return now.view() == m_received.view() || now.view() == textAtFirst();
    }
    /** What the value was written as by its class before anybody could change it. */
    [[gnu::noinline]] std::string textAtFirst() const {
        const KxHandle<KxSipHeader> original = KxHandle<KxSipHeader>::sOfNew(Base::sCreate());
        KxSipReceivedHeader& typed = static_cast<KxSipReceivedHeader&>(*original);
        KxSipLine line(m_received.view());
        KxByteArrayOutputStream text;
        if (!typed.Base::readValue(line)) {
            typed.Base::doSerialize(text);
        }
        return std::string(text.view());
    }

    KxString m_received;
};
