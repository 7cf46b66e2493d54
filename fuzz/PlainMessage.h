#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipobject/messages/KxSipMessage.h"

#include <string>
#include <string_view>
#include <vector>

/** A message as lines of text. It implements only the rules by which headers are added and removed. */
class PlainMessage {
public:
    /** The text before the headers is taken as the start line. */
    explicit PlainMessage(const KxSipMessage& message) : PlainMessage(message, ::written(message)) {}
    /** @param text what the message writes. */
    PlainMessage(const KxSipMessage& message, std::string_view text) {
        const std::size_t size =
            message.hasBody() ? std::min<std::size_t>(message.getBodyLength(), message.getStoredBodyLength()) : 0;
        const std::string_view head = text.substr(0, text.size() - std::min(size, text.size()));
        m_body = std::string(text.substr(head.size()));
        same("a message ends in its body", m_body, {size == 0 ? "" : message.getBody(), size});
        std::string_view rest = head;
        const bool hasStart = std::count(head.begin(), head.end(), '\n') != valuesOf(message) + 1;
        m_start = hasStart ? takeLine(rest) : "";
        for (const HeaderID id : message.getHeaderOrder()) {
            Kind& kind = m_kinds.emplace_back(Kind{id, {}});
            for (const KxSipHeader* value = message.getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                if (!isLineOf(rest, value->getToken().view())) {
                    fail("a message has its headers, a line each", text, value->getToken().view());
                }
                kind.lines.push_back(lineOf(*value, takeLine(rest)));
            }
        }
        same("an empty line is after the headers", "\r\n", rest);
    }

    /** Adds the header's values after those of its kind. With `first`, adds only the first value, before those of its
        kind (all values if there are none). With `single`, adds only the first value. */
    void add(const KxSipHeader& header, bool first, bool single) {
        std::vector<Line> lines = linesOf(header);
        Kind* const kind = find(header.getHeaderID());
        if (single || (first && kind != nullptr)) {
            lines.resize(1);
        }
        if (kind == nullptr) {
            m_kinds.push_back({header.getHeaderID(), lines});
        } else {
            kind->lines.insert(first ? kind->lines.begin() : kind->lines.end(), lines.begin(), lines.end());
        }
    }
    /** Puts the first value into the place of all of its kind. */
    void replace(const KxSipHeader& header) {
        std::vector<Line> lines = linesOf(header);
        lines.resize(1);
        if (Kind* const kind = find(header.getHeaderID()); kind != nullptr) {
            kind->lines = lines;
        } else {
            m_kinds.push_back({header.getHeaderID(), lines});
        }
    }
    /** Removes the first value of the kind whose first value has the name; if there is no such kind, the first unknown
        header with the name. */
    bool remove(std::string_view name) {
        Kind* const kind = findToken(name);
        if (kind == nullptr) {
            return false;
        }
        const auto line = std::find_if(kind->lines.begin(), kind->lines.end(), [&](const Line& candidate) {
            return kind->id != KxHeaderIDs::kUnknown || KxAscii::equalsNoCase(candidate.token, name);
        });
        if (line == kind->lines.end()) {
            return false;
        }
        kind->lines.erase(line);
        std::erase_if(m_kinds, [](const Kind& left) { return left.lines.empty(); });
        return true;
    }
    /** The line that is found by a name, "" if there is none. Names of unknown headers are case-sensitive, except in
        the RFC grammar. */
    std::string line(std::string_view name) {
        Kind* const kind = findToken(name);
        if (kind == nullptr) {
            return "";
        }
        for (const Line& candidate : kind->lines) {
            if (kind->id != KxHeaderIDs::kUnknown || candidate.token == name ||
                (isRFC() && KxAscii::equalsNoCase(candidate.token, name))) {
                return candidate.text;
            }
        }
        return "";
    }
    /** How many kinds have a first line that is found by the name. */
    std::ptrdiff_t kindsNamed(std::string_view name) const {
        return std::count_if(m_kinds.begin(), m_kinds.end(), [name](const Kind& kind) { return isNamed(kind, name); });
    }
    /** Drops the lines of a kind, to see what else has changed. */
    PlainMessage& without(HeaderID id) {
        std::erase_if(m_kinds, [id](const Kind& kind) { return kind.id == id; });
        return *this;
    }
    PlainMessage& withoutBody() {
        m_body.clear();
        return *this;
    }
    PlainMessage& withStart(const std::string& line) {
        m_start = line;
        return *this;
    }

    std::string written() const {
        std::string text = m_start;
        for (const Kind& kind : m_kinds) {
            for (const Line& each : kind.lines) {
                text += each.text;
            }
        }
        return text + "\r\n" + m_body;
    }

private:
    struct Line {
        KxString token; ///< The name as written, by which the line is found.
        std::string text;
        KxString full;    ///< In the RFC grammar, a known kind is also found by its other names.
        KxString compact; ///< As above.
    };
    struct Kind {
        HeaderID id;
        std::vector<Line> lines;
    };

    static bool isNamed(const Kind& kind, std::string_view name) {
        const Line& first = kind.lines[0];
        const bool hasNames = isRFC() && kind.id != KxHeaderIDs::kUnknown;
        return KxAscii::equalsNoCase(first.token, name) ||
               (hasNames && (KxAscii::equalsNoCase(first.full, name) || KxAscii::equalsNoCase(first.compact, name)));
    }
    static bool isLineOf(std::string_view text, std::string_view name) {
        return text.starts_with(name) && text.substr(name.size()).starts_with(": ");
    }
    static std::ptrdiff_t valuesOf(const KxSipMessage& message) {
        std::ptrdiff_t count = 0;
        for (const HeaderID id : message.getHeaderOrder()) {
            for (const KxSipHeader* value = message.getHeaderByID(id).get(); value != nullptr;
                 value = value->getNext().get()) {
                ++count;
            }
        }
        return count;
    }
    /** Takes the first line, of which no other character may end a line. */
    static std::string takeLine(std::string_view& rest) {
        const std::size_t end = rest.find_first_of("\r\n");
        if (end == rest.npos || rest.substr(end, 2) != "\r\n") {
            fail("a line ends in CR LF", rest.substr(0, end), rest.substr(std::min(end, rest.size())));
        }
        const std::string line(rest.substr(0, end + 2));
        rest.remove_prefix(end + 2);
        return line;
    }
    static Line lineOf(const KxSipHeader& value, std::string line) {
        return {value.getToken(), std::move(line), value.getExpandedToken(), value.getCompactToken()};
    }
    static std::vector<Line> linesOf(const KxSipHeader& chain) {
        std::vector<Line> lines;
        const std::string text = ::written(chain);
        std::string_view rest = text;
        for (const KxSipHeader* value = &chain; value != nullptr; value = value->getNext().get()) {
            lines.push_back(lineOf(*value, takeLine(rest)));
        }
        same("a header has a line for each value", "", rest);
        return lines;
    }
    Kind* find(HeaderID id) {
        const auto kind = std::find_if(m_kinds.begin(), m_kinds.end(), [id](const Kind& k) { return k.id == id; });
        return kind == m_kinds.end() ? nullptr : &*kind;
    }
    Kind* findToken(std::string_view name) {
        const auto kind = std::find_if(m_kinds.begin(), m_kinds.end(),
                                       [name](const Kind& candidate) { return isNamed(candidate, name); });
        return kind == m_kinds.end() ? find(KxHeaderIDs::kUnknown) : &*kind;
    }

    std::string m_start;
    std::vector<Kind> m_kinds;
    std::string m_body;
};
