#pragma once

#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/auth/KxSipAuthToken.h"
#include "util/KxHandle.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

#include <string_view>
#include <typeinfo>
#include <utility>

/** The value of an authentication header: a whole line, in which commas separate only the properties.
    challenge / credentials = auth-scheme SP auth-param *( "," auth-param )   [RFC 2617 1.2]
    A line without a blank is only a scheme.      "Digest realm=a,nonce=b" -> "Digest", "realm=a,nonce=b" */
class KxSipSchemeLine {
public:
    /** Reads the rest of the line, starting at the first character that is neither blank nor tab. */
    explicit KxSipSchemeLine(KxSipLine& line)
        : m_line(sTakeRest(line)),
          m_blank(KxSipGrammar::sReadsAuthParams() ? m_line.find_first_of(" \t") : m_line.find(' ')) {}

    std::string_view line() const { return m_line; }
    std::string_view scheme() const { return m_line.substr(0, m_blank); }
    std::string_view parameters() const {
        return m_blank == std::string_view::npos ? std::string_view() : m_line.substr(m_blank + 1);
    }

    /** Reads the properties into a new object of class Digest and stores it in `info`, if `scheme` is `name`, ignoring
        letter case. Any other scheme is kept in an object of class Other, if the grammar allows it; otherwise returns a
        fault with the text `unknown`. */
    template <class Digest, class Other, class Info>
    static KxSipFault sRead(std::string_view scheme, const KxString& name, const char* unknown,
                            KxInputStream& properties, KxHandle<Info>& info) {
        if (!name.equalsNoCase(scheme)) {
            if (KxSipGrammar::sKeepsOtherSchemes() && sKeep<Other>(scheme, properties, info)) {
                return {};
            }
            return KxSipFault(unknown, KxSipFault::Error::Other);
        }
        KxHandle<Digest> read = KxMake<Digest>();
        const KxSipFault fault = read->read(properties);
        if (!fault) {
            info = std::move(read);
        }
        return fault;
    }

    /** Writes the scheme, a blank and the properties of a challenge or of credentials; nothing for nil. In the RFC
        grammar no blank is written after the scheme of an object of class Other that has no text. */
    template <class Other, class Info>
    static void sWrite(KxOutputStream& out, const KxHandle<Info>& info) {
        if (info.isNil()) {
            return;
        }
        out << info->getType();
        if (KxSipGrammar::sKeepsOtherSchemes() && typeid(*info) == typeid(Other) &&
            static_cast<const Other&>(*info).getText().isNil()) {
            return;
        }
        out << ' ';
        info->serialize(out);
    }

private:
    /** Keeps a scheme and the text after it in a new object. Returns false, without one, if the scheme is no token, or
        the text has more than one line. */
    template <class Other, class Info>
    [[gnu::noinline]] static bool sKeep(std::string_view scheme, KxInputStream& text, KxHandle<Info>& info) {
        while (!text.isWhole() && text.extendWindow()) {
        }
        const bool isKept = KxSipAuthToken::sIs(scheme) &&
                            text.window().find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
        if (isKept) {
            info = KxMake<Other>(scheme, text.window());
        }
        return isKept;
    }
    static std::string_view sTakeRest(KxSipLine& line) {
        KxStreamTokenizer::sDiscardWhite(line);
        std::string_view rest = line.until<'\n'>();
        line.read();
        if (!rest.empty() && rest.back() == '\r') {
            rest.remove_suffix(1);
        }
        return rest;
    }

    std::string_view m_line;
    std::size_t m_blank; ///< After the scheme.
};
