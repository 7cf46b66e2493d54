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
    explicit PlainMessage(const KxSipMessage& message) {
        for (const HeaderID id : message.getHeaderOrder()) {
            m_kinds.push_back({id, linesOf(*message.getHeaderByID(id))});
        }
        const std::string text = ::written(message);
        if (message.hasBody()) {
            m_body.assign(message.getBody(),
                          std::min<std::size_t>(message.getBodyLength(), message.getStoredBodyLength()));
        }
        const std::string rest = written();
        if (!text.ends_with(rest)) {
            fail("a message ends in its headers, a line each, and its body", text, rest);
        }
        m_start = text.substr(0, text.size() - rest.size());
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
        std::string token; ///< The name as written, by which the line is found.
        std::string text;
        std::string full;    ///< In the RFC grammar, a known kind is also found by its other names.
        std::string compact; ///< As above.
    };
    struct Kind {
        HeaderID id;
        std::vector<Line> lines;
    };

    static std::vector<Line> linesOf(const KxSipHeader& chain) {
        std::vector<Line> lines;
        for (const KxSipHeader* value = &chain; value != nullptr; value = value->getNext().get()) {
            const KxHandle<KxSipHeader> alone(static_cast<KxSipHeader*>(value->clone()));
            lines.push_back({std::string(value->getToken().view()), ::written(*alone),
                             std::string(value->getExpandedToken().view()),
                             std::string(value->getCompactToken().view())});
        }
        return lines;
    }
    Kind* find(HeaderID id) {
        const auto kind = std::find_if(m_kinds.begin(), m_kinds.end(), [id](const Kind& k) { return k.id == id; });
        return kind == m_kinds.end() ? nullptr : &*kind;
    }
    Kind* findToken(std::string_view name) {
        const auto kind = std::find_if(m_kinds.begin(), m_kinds.end(), [name](const Kind& candidate) {
            const Line& first = candidate.lines[0];
            const bool hasNames = isRFC() && candidate.id != KxHeaderIDs::kUnknown;
            return KxAscii::equalsNoCase(first.token, name) ||
                   (hasNames &&
                    (KxAscii::equalsNoCase(first.full, name) || KxAscii::equalsNoCase(first.compact, name)));
        });
        return kind == m_kinds.end() ? find(KxHeaderIDs::kUnknown) : &*kind;
    }

    std::string m_start;
    std::vector<Kind> m_kinds;
    std::string m_body;
};
