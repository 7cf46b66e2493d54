#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"

/** Lets a header or a group of headers (Base) keep, as text, a value that its grammar refuses, and write it back
    unchanged. For headers that senders often write differently from the RFC and that are not needed to process the
    message. Only a header line that is read keeps the text; constructors from text throw. A class H, or Base, defines

        static constexpr const char* kHidesCommas = "\"<";  // optional: a comma ends the text, except in quotes or "<>"
        void forgetValue();                                 // makes the object as empty as a new one

    Without kHidesCommas, commas are part of the text, which ends with the line. Leading blanks are dropped; other
    leading white space is kept, since it may be the reason for the refusal. A text of only white space is refused. In
    the RFC grammar white space at the end is dropped, and the message gets the status 1. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipTextKeepingHeader : public Base {
public:
    /** The value as received if the grammar could not read it, else empty. If it is not empty, all other getters return
        nil, empty or 0, and parameters that are set later are written after it. */
    const KxString& getText() const { return m_text; }

protected:
    using Base::Base;
    KxSipTextKeepingHeader() = default;
    KxSipTextKeepingHeader(const KxSipTextKeepingHeader&) = default;

    KxSipFault readValue(KxSipLine& line) override {
        line.mark();
        const KxSipFault fault = Base::readValue(line);
        if (fault) [[unlikely]] {
            line.reset();
            return keep(line, fault);
        }
        forgetText();
        return {};
    }
    void doSerialize(KxOutputStream& out) const override {
        if (m_text.empty()) [[likely]] {
            Base::doSerialize(out);
        } else {
            const Oskan::TraceScope trace(this->sLogger(), KxTraceName<H, "::doSerialize">);
            out.write(m_text.view());
            self().serializeParameters(out);
        }
    }

    void forgetText() {
        if (!m_text.empty()) {
            m_text = KxString();
        }
    }

    /** The text of the value at the start of `line`. Scans no further than that value, since a line may have many. */
    [[gnu::cold]] static std::string_view sTextOf(std::string_view line) {
        std::string_view hides;
        bool hasCommas = true;
        if constexpr (requires { H::kHidesCommas; }) {
            hides = H::kHidesCommas;
            hasCommas = false;
        }
        char closing = '\0';
        for (std::size_t at = 0; at < line.size(); ++at) {
            const char c = line[at];
            if (c == '\r' || c == '\n' || (c == ',' && !hasCommas && closing == '\0')) {
                return line.substr(0, at);
            }
            if (closing != '\0') {
                at += closing == '"' && c == '\\' ? 1 : 0;
                closing = c == closing ? '\0' : closing;
            } else if (hides.find(c) != std::string_view::npos) {
                closing = c == '<' ? '>' : c;
            }
        }
        return line;
    }

private:
    [[gnu::cold, gnu::noinline]] KxSipFault keep(KxSipLine& line, const KxSipFault& fault) {
        if (line.isReadTwice()) {
            return fault;
        }
        line.noteKept(fault);
        KxStreamTokenizer::sDiscardWhite(line);
        const std::string_view text = sTextOf(line.window());
        if (KxAscii::trim(text).empty()) {
            return fault;
        }
        // Other white space may be why it is not read, and is not when it is read again without.
        const std::size_t end = KxSipGrammar::sReadsLinesByValue() ? text.find_last_not_of(" \t\r\n") + 1 : text.size();
        KxString kept(text.substr(0, end));
        self().forgetValue();
        m_text = std::move(kept);
        line.consume(text.size());
        return {};
    }

    H& self() { return static_cast<H&>(*this); }
    const H& self() const { return static_cast<const H&>(*this); }

    KxString m_text;
};
