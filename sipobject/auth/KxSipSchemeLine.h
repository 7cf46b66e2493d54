#pragma once

#include "sipobject/KxSipLine.h"
#include "util/KxHandle.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

#include <string_view>
#include <utility>

/** The value of an authentication header: a whole line, in which commas separate only the properties.
    challenge / credentials = auth-scheme SP auth-param *( "," auth-param )   [RFC 2617 1.2]
    A line without a blank is only a scheme.      "Digest realm=a,nonce=b" -> "Digest", "realm=a,nonce=b" */
class KxSipSchemeLine {
public:
    /** Reads the rest of the line, starting at the first character that is neither blank nor tab. */
    explicit KxSipSchemeLine(KxSipLine& line) : m_line(sTakeRest(line)) {}

    std::string_view line() const { return m_line; }
    std::string_view scheme() const { return m_line.substr(0, m_line.find(' ')); }
    std::string_view parameters() const {
        const std::size_t blank = m_line.find(' ');
        return blank == std::string_view::npos ? std::string_view() : m_line.substr(blank + 1);
    }

    /** Reads the properties into a new object of class Digest and stores it in `info`, if `scheme` is `name`, ignoring
        letter case; otherwise returns a fault with the text `unknown`. */
    template <class Digest, class Info>
    static KxSipFault sRead(std::string_view scheme, const KxString& name, const char* unknown,
                            KxInputStream& properties, KxHandle<Info>& info) {
        if (!name.equalsNoCase(scheme)) {
            return KxSipFault(unknown, KxSipFault::Error::Other);
        }
        KxHandle<Digest> read = KxMake<Digest>();
        const KxSipFault fault = read->read(properties);
        if (!fault) {
            info = std::move(read);
        }
        return fault;
    }

    /** Writes the scheme, a blank and the properties of a challenge or of credentials; nothing for nil. */
    template <class Info>
    static void sWrite(KxOutputStream& out, const KxHandle<Info>& info) {
        if (!info.isNil()) {
            out << info->getType() << ' ';
            info->serialize(out);
        }
    }

private:
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
};
