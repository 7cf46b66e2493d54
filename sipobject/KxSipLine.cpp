#include "sipobject/KxSipLine.h"

#include "sipobject/KxSipGrammar.h"
#include "util/KxBytes.h"
#include "util/KxStreamTokenizer.h"

#include <algorithm>
#include <typeinfo>

namespace {

constexpr KxSipFault kNoToken{"Header token expected"};
constexpr KxSipFault kNoColon{"SIP Header parse error : no colon found"};

/** The text without blanks, tabs and line breaks at its end. Other white space stays. */
std::string_view trimLineEnd(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

/** Whether an unquoted "@" comes before an unquoted ">", a line end and the end. Sets `stop` to where it stopped. */
bool findAt(const char* from, const char* end, const char*& stop) {
    bool quoted = false;
    const auto next = [end](const char* at) { return KxBytes::findAny<'"', '@', '>', '\n'>(at, end); };
    for (const char* at = next(from); at != end; at = next(at + 1)) {
        if (*at == '"') {
            quoted = !quoted;
        } else if (*at == '\n' || !quoted) {
            stop = at;
            return *at == '@';
        }
    }
    stop = end;
    return false;
}

} // namespace

KxSipLine::KxSipLine(KxInputStream& source) : KxSipLine() {
    const std::size_t length = source.fillLine();
    const char* const text = source.window().data();
    setWindow(text, text + length, source.isWhole() ? source.readableEnd() : text + length);
    m_source = &source; // not before, since fillLine may throw
    if (typeid(source) == typeid(KxSipLine)) {
        m_userParts = static_cast<const KxSipLine&>(source).m_userParts;
    }
}

void KxSipLine::consumeFromSource() {
    m_source->consume(static_cast<std::size_t>(begin() - m_source->window().data()));
    if (typeid(*m_source) == typeid(KxSipLine)) {
        static_cast<KxSipLine&>(*m_source).m_userParts = m_userParts;
    }
}

std::size_t KxSipLine::readSome(char*, std::size_t) {
    return 0;
}

/** Takes any other line: folded, without CR LF at its end, with blanks around its name, faulty, or of a stream that is
    not whole. */
[[gnu::noinline]] KxSipFault KxSipLine::takeUnplain(KxInputStream& in) {
    m_isPlain = false;
    m_key = {}; // a faulty line has none, and neither has one that the stream fails to deliver
    if (!in.isWhole()) {
        KxSipLine whole(in);
        return take(whole);
    }
    const int first = KxStreamTokenizer::sDiscardWhite(in);
    if (first < 0 || first == ':') {
        KxStreamTokenizer::sDiscardLine(in);
        return kNoToken;
    }
    const char* const raw = in.window().data();
    if (const KxSipFault fault = takeUnnamed(in)) {
        return fault;
    }
    const char* const colon = KxBytes::findAny<':'>(raw, in.window().data());
    m_key = trimLineEnd(std::string_view(raw, static_cast<std::size_t>(colon - raw)));
    const bool isNone = m_name.empty() || m_key.empty();
    if (isNone || (KxSipGrammar::sReadsLinesByValue() && m_key != m_name)) { // "Vi\r\n a", or control characters
        m_key = {};
        return kNoToken;
    }
    return {};
}

KxSipFault KxSipLine::takeUnnamed(KxInputStream& in) {
    if (!in.isWhole()) {
        KxSipLine whole(in);
        return takeUnnamed(whole);
    }
    const std::string_view line = takeUnfolded(in);
    const std::size_t colon = line.find(':');
    const char* const end = line.data() + line.size();
    m_name = KxAscii::trim(line.substr(0, colon));
    moveTo(colon == std::string_view::npos ? end : line.data() + colon + 1, end, end);
    return colon == std::string_view::npos ? kNoColon : KxSipFault();
}

/** Takes one logical line: in place if it ends plainly, else unfolded into a copy that ends in CR LF. */
std::string_view KxSipLine::takeUnfolded(KxInputStream& in) {
    const std::string_view window = in.window();
    const char* const stop = KxBytes::findAny<'\r', '\n'>(window.data(), window.data() + window.size());
    if (sEndsPlainly(stop, window.data() + window.size())) {
        const auto length = static_cast<std::size_t>(stop - window.data()) + 2;
        in.consume(length);
        return window.substr(0, length);
    }
    m_unfolded.clear();
    if (KxSipGrammar::sJoinsFoldsByBlank()) {
        return takeJoined(in);
    }
    for (int c = in.read(); c >= 0; c = in.read()) {
        if (c == '\n') {
            const int next = in.peek();
            if (next != ' ' && next != '\t') {
                break;
            }
            in.consume(1);
        } else if (c != '\r') {
            m_unfolded.append(static_cast<char>(c));
        }
    }
    m_unfolded.append("\r\n", 2);
    return m_unfolded.view();
}

/** As takeUnfolded, but all white space around a line end within the line becomes one blank. */
std::string_view KxSipLine::takeJoined(KxInputStream& in) {
    bool isContinued = true;
    for (bool isFirst = true; isContinued; isFirst = false) {
        const std::string_view rest = in.window();
        const std::size_t stop = std::min(rest.find('\n'), rest.size());
        in.consume(std::min(stop + 1, rest.size()));
        isContinued = in.peek() == ' ' || in.peek() == '\t';
        std::string_view part = rest.substr(0, stop);
        if (!isFirst) {
            part.remove_prefix(std::min(part.find_first_not_of(" \t\r"), part.size()));
        }
        if (isContinued) {
            part = trimLineEnd(part);
        }
        if (!isFirst && !part.empty()) {
            m_unfolded.append(' ');
        }
        for (const char c : part) {
            if (c != '\r') {
                m_unfolded.append(c);
            }
        }
    }
    m_unfolded.append("\r\n", 2);
    return m_unfolded.view();
}

std::string_view KxSipLine::values() const {
    const char* const last = end() - 2;
    const char* const colon = KxBytes::findAny<':'>(m_name.data() + m_name.size(), last);
    return std::string_view(colon, static_cast<std::size_t>(last - colon)).substr(1);
}

bool KxSipLine::hasUserPart(const char* at) {
    UserParts& last = m_userParts;
    if (last.at == nullptr || at < last.at) {
        last = {at, false, {nullptr, nullptr}, {false, false}};
    }
    for (; last.at != at; ++last.at) {
        last.quoted ^= *last.at == '"';
    }
    const char*& stop = last.stop[last.quoted];
    if (stop == nullptr || stop < at) {
        last.found[last.quoted] = findAt(at, end(), stop);
    }
    return last.found[last.quoted];
}
