#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"

/** Lets a header, or a family of headers (Base), keep a value that its grammar refuses: as the text that it is, written
    as it stood. For headers that are often sent otherwise than the RFC says, and that no message needs to be understood
    for. Only lines that are read are kept so; constructors from text throw what is wrong. A class H, or its family, says

        static constexpr const char* kHidesCommas = "\"<";  // optional: a comma ends the text, except in quotes or "<>"
        void forgetValue();                                 // makes the object as empty as a new one

    Without kHidesCommas commas belong to the text, which ends with the line. White space in front that is no blank
    belongs to it: it may be why the grammar refused. A text of white space is refused. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipTextKeepingHeader : public Base {
public:
    /** The value as it stood, where the grammar could not read it: all other getters then read as nil, empty or 0, and
        parameters that are set are written after it. Empty where it could. */
    const KxString& getText() const { return m_text; }

protected:
    using Base::Base;
    KxSipTextKeepingHeader() = default;
    KxSipTextKeepingHeader(const KxSipTextKeepingHeader&) = default;

    KxSipFault parseOrKeep(KxInputStream& in) {
        in.mark();
        const KxSipFault fault = Base::parseOrKeep(in);
        if (fault) [[unlikely]] {
            in.reset();
            return keep(in, fault);
        }
        forgetText();
        return {};
    }
    void serializeOrKept(KxOutputStream& out) const {
        if (m_text.empty()) [[likely]] {
            Base::serializeOrKept(out);
        } else {
            out.write(m_text.view());
            self().serializeParameters(out);
        }
    }

    void forgetText() {
        if (!m_text.empty()) {
            m_text = KxString();
        }
    }

    /** The text of a value that the line continues with. Looks no further than that, since a line may have many. */
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
    [[gnu::cold, gnu::noinline]] KxSipFault keep(KxInputStream& in, const KxSipFault& fault) {
        KxStreamTokenizer::sDiscardWhite(in);
        const std::string_view text = sTextOf(in.window());
        if (KxAscii::trim(text).empty()) {
            return fault;
        }
        KxString kept(text);
        self().forgetValue();
        m_text = std::move(kept);
        in.consume(text.size());
        return {};
    }

    H& self() { return static_cast<H&>(*this); }
    const H& self() const { return static_cast<const H&>(*this); }

    KxString m_text;
};
