#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipobject/messages/KxSipMessage.h"

#include <string>
#include <string_view>
#include <vector>

/** A message as lines of text, which knows by which rules headers are added and removed, and nothing else. */
class PlainMessage {
public:
    /** What is in front of the headers stands for the start line. */
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

    /** Puts the header's values in front of those of its kind, where only the first goes, or behind them. */
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
    /** Of the kind whose first value is written under the name, the first; else of the unknown ones the first of the
        name. */
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
    /** The line that a name finds, "" for none; of those that are not registered the letter case counts. */
    std::string line(std::string_view name) {
        Kind* const kind = findToken(name);
        if (kind == nullptr) {
            return "";
        }
        for (const Line& candidate : kind->lines) {
            if (kind->id != KxHeaderIDs::kUnknown || candidate.token == name) {
                return candidate.text;
            }
        }
        return "";
    }
    /** Without the lines of a kind; to see what else has changed. */
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
        std::string token; ///< The name as written, by which it is found.
        std::string text;
    };
    struct Kind {
        HeaderID id;
        std::vector<Line> lines;
    };

    static std::vector<Line> linesOf(const KxSipHeader& chain) {
        std::vector<Line> lines;
        for (const KxSipHeader* value = &chain; value != nullptr; value = value->getNext().get()) {
            const KxHandle<KxSipHeader> alone(static_cast<KxSipHeader*>(value->clone()));
            lines.push_back({std::string(value->getToken().view()), ::written(*alone)});
        }
        return lines;
    }
    Kind* find(HeaderID id) {
        const auto kind = std::find_if(m_kinds.begin(), m_kinds.end(), [id](const Kind& k) { return k.id == id; });
        return kind == m_kinds.end() ? nullptr : &*kind;
    }
    Kind* findToken(std::string_view name) {
        const auto kind = std::find_if(m_kinds.begin(), m_kinds.end(), [name](const Kind& candidate) {
            return KxAscii::equalsNoCase(candidate.lines[0].token, name);
        });
        return kind == m_kinds.end() ? find(KxHeaderIDs::kUnknown) : &*kind;
    }

    std::string m_start;
    std::vector<Kind> m_kinds;
    std::string m_body;
};
