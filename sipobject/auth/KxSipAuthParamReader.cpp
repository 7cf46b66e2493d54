#include "sipobject/auth/KxSipAuthParamReader.h"

#include "sipobject/auth/KxSipAuthToken.h"
#include "util/KxBytes.h"
#include "util/KxInputStream.h"

namespace {

constexpr KxSipFault kFault("Failed to parse Proxy-Authenticate SIP header", KxSipFault::Error::Other);

const char* skipSpaceAndCommas(const char* at, const char* end) {
    while (at != end && (*at == ',' || KxAscii::isSpace(*at))) {
        ++at;
    }
    return at;
}

/** Reads a quoted string from the character after its first quote. Returns the place after the last quote, null if
    there is none. `value` becomes a view of the text, or of `unescaped` if it has escapes. */
const char* takeQuoted(const char* at, const char* end, const char* readable, std::string& unescaped,
                       std::string_view& value) {
    unescaped.clear();
    for (;;) {
        const char* const stop = KxBytes::findAny<'"', '\\', '\r', '\n', '\0'>(at, end, readable);
        const std::string_view run(at, static_cast<std::size_t>(stop - at));
        if (stop != end && *stop == '"') {
            value = unescaped.empty() ? run : std::string_view(unescaped.append(run));
            return stop + 1;
        }
        const bool isEscape = end - stop >= 2 && *stop == '\\' && stop[1] != '\r' && stop[1] != '\n' && stop[1] != '\0';
        if (!isEscape) {
            return nullptr;
        }
        unescaped.append(run).push_back(stop[1]);
        at = stop + 2;
    }
}

/** Empties the list, unless it is told to keep it. */
struct Undo {
    ~Undo() {
        if (list != nullptr) {
            list->clear();
        }
    }
    KxParameters* list;
};

} // namespace

KxSipFault KxSipAuthParamReader::read(KxInputStream& in, bool isNeeded) {
    while (!in.isWhole() && in.extendWindow()) {
    }
    if (m_properties.empty()) {
        Undo undo{&m_properties};
        const KxSipFault fault = readInto(m_properties, in, isNeeded);
        undo.list = fault ? &m_properties : nullptr;
        return fault;
    }
    KxParameters more(m_properties);
    const KxSipFault fault = readInto(more, in, isNeeded);
    if (!fault) {
        m_properties = more;
    }
    return fault;
}

KxSipFault KxSipAuthParamReader::readInto(KxParameters& properties, KxInputStream& in, bool isNeeded) const {
    const char* const end = in.window().data() + in.window().size();
    const char* at = skipSpaceAndCommas(in.window().data(), end);
    if (at == end && isNeeded) {
        return kFault;
    }
    while (at != end) {
        at = readOne(properties, at, end, in.readableEnd());
        if (at == nullptr) {
            return kFault;
        }
        at = skipSpaceAndCommas(at, end);
    }
    in.consume(in.window().size());
    return {};
}

/** Reads a property, which begins at `at`; returns its end, or null if it can't be read. */
const char* KxSipAuthParamReader::readOne(KxParameters& properties, const char* at, const char* end,
                                          const char* readable) const {
    const char* const equals = KxBytes::findAny<'=', ',', '"'>(at, end, readable);
    const std::string_view name = KxAscii::trimEnd(std::string_view(at, static_cast<std::size_t>(equals - at)));
    if (equals == end || *equals != '=' || !KxSipAuthToken::sIs(name)) {
        return nullptr;
    }
    const char* const begin = KxAscii::skipSpace(equals + 1, end);
    const char* stop = nullptr;
    std::string unescaped;
    std::string_view value;
    if (begin != end && *begin == '"') {
        stop = takeQuoted(begin + 1, end, readable, unescaped, value);
    } else {
        stop = KxBytes::findAny<',', '"', '\r', '\n', '\0'>(begin, end, readable);
        value = KxAscii::trimEnd(std::string_view(begin, static_cast<std::size_t>(stop - begin)));
    }
    stop = stop == nullptr ? nullptr : KxAscii::skipSpace(stop, end);
    if (stop == nullptr || (stop != end && *stop != ',')) {
        return nullptr;
    }
    if (m_isHidden == nullptr || !m_isHidden(name)) {
        properties.setValue(name, KxString(value));
    }
    return stop;
}
