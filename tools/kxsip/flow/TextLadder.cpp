#include "tools/kxsip/flow/TextLadder.h"

#include "tools/kxsip/Printable.h"
#include "tools/kxsip/flow/Utf8.h"
#include "util/KxAscii.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <map>
#include <sstream>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr std::size_t kMostColumns = 100;

std::string blanks(std::size_t count) {
    return std::string(count, ' ');
}

std::string repeated(const char* text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

std::string rightAligned(const std::string& text, std::size_t width) {
    return blanks(width - std::min(width, text.size())) + text;
}

Ink inkOf(const Step& step) {
    return step.repeats ? Ink::Faint : step.isUseless() ? Ink::Failure : Colour::sInkOf(step.facts.code);
}

} // namespace

const TextLadder::Strokes TextLadder::sLines = {"\u2502", "\u2500", "\u25C0", "\u25B6", "\u21BA", "\u2026"};
const TextLadder::Strokes TextLadder::sAscii = {"|", "-", "<", ">", "@", "..."};

bool canDrawLines() {
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            std::string locale(value);
            std::transform(locale.begin(), locale.end(), locale.begin(), KxAscii::toLower);
            return locale.find("utf-8") != std::string::npos || locale.find("utf8") != std::string::npos;
        }
    }
    return false;
}

std::optional<std::size_t> terminalWidth() {
    winsize size{};
    if (isatty(STDOUT_FILENO) != 1) {
        return std::nullopt;
    }
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    const char* const columns = std::getenv("COLUMNS");
    const std::string_view text = columns == nullptr ? "" : columns;
    std::size_t width = 0;
    std::from_chars(text.data(), text.data() + text.size(), width);
    return width > 0 ? std::optional(width) : std::nullopt;
}

TextLadder::TextLadder(std::ostream& out, Colour colour, Style style)
    : m_out(out), m_colour(colour), m_style(style), m_strokes(style.lines ? sLines : sAscii) {}

void TextLadder::draw(const Call& call) {
    m_out << (m_first ? "" : "\n");
    m_first = false;
    m_layout.emplace(call, m_style.time, m_style.width, m_strokes.ellipsis);
    drawTitle(call);
    if (call.columns.size() > kMostColumns) {
        drawList(call);
    } else {
        drawLadder(call);
    }
    drawFlaws(call);
}

void TextLadder::drawLadder(const Call& call) {
    if (m_layout->isKeyed()) {
        drawKey(call);
    }
    drawNames(call);
    for (const Step& step : call.steps) {
        drawStep(call, step);
    }
}

/** Draws no lifelines, which would take more room than all messages, but names both ends of each message. */
void TextLadder::drawList(const Call& call) {
    const auto endsOf = [](const Step& step) {
        return step.origin.source.text() + " > " + step.origin.destination.text();
    };
    std::size_t width = 0;
    for (const Step& step : call.steps) {
        width = std::max(width, endsOf(step).size());
    }
    for (const Step& step : call.steps) {
        const std::string ends = endsOf(step);
        drawGutter(call, step);
        m_out << ends << blanks(width - ends.size() + 2)
              << m_colour(inkOf(step), labelOf(step, m_layout->roomAt(m_layout->at(0) + width + 2))) << '\n';
    }
}

std::string TextLadder::shortened(const std::string& text, std::size_t most) const {
    return Utf8::shortened(text, most, m_strokes.ellipsis);
}

/** Draws as many pieces to a line as fit, `between` blanks between two of them. All lines but the first are indented. A
    piece that is wider than a line is shortened. */
void TextLadder::drawPieces(const std::vector<Piece>& pieces, std::size_t between, std::size_t indent) {
    const std::size_t width = m_style.width.value_or(std::string::npos);
    std::size_t taken = 0;
    for (const Piece& piece : pieces) {
        const bool isFirst = &piece == &pieces.front();
        const bool fits = taken + between + Utf8::width(piece.text) <= width;
        const std::string text = shortened(piece.text, std::max<std::size_t>(width - std::min(width, indent), 1));
        const std::size_t before = isFirst ? 0 : fits ? between : indent;
        m_out << (isFirst || fits ? "" : "\n") << blanks(before) << m_colour(piece.ink, text);
        taken = (isFirst || fits ? taken : 0) + before + Utf8::width(text);
    }
    m_out << '\n';
}

void TextLadder::drawTitle(const Call& call) {
    const Ink ink = call.resultCode() == 0 ? Ink::Failure : Colour::sInkOf(call.resultCode());
    drawPieces({{Ink::Place, call.title()}, {ink, call.result()}}, 2);
    drawPieces({{Ink::Faint, "Call-ID " + printable(call.id) + ","},
                {Ink::Faint, call.extent()},
                {Ink::Faint, "from " + m_style.time.date(call.begin())}},
               1);
    m_out << '\n';
}

/** Says which columns the letters mean. */
void TextLadder::drawKey(const Call& call) {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < call.columns.size(); ++i) {
        const std::string ports = call.columns[i].portText();
        pieces.push_back(
            {Ink::Place, m_layout->names()[i] + " " + call.columns[i].name + (ports.empty() ? "" : " " + ports)});
    }
    drawPieces(pieces, 3);
    m_out << '\n';
}

void TextLadder::drawNames(const Call& call) {
    std::string names;
    std::string ports;
    const auto put = [](std::string& line, std::size_t centre, const std::string& text) {
        const std::size_t begin = std::max(centre, Utf8::width(text) / 2) - Utf8::width(text) / 2;
        line += blanks(begin - std::min(Utf8::width(line), begin)) + text;
    };
    for (std::size_t i = 0; i < call.columns.size(); ++i) {
        put(names, m_layout->at(i), m_layout->names()[i]);
        put(ports, m_layout->at(i), m_layout->isKeyed() ? "" : call.columns[i].portText());
    }
    m_out << m_colour(Ink::Place, names) << '\n';
    if (ports.find_first_not_of(' ') != std::string::npos) {
        m_out << m_colour(Ink::Faint, ports) << '\n';
    }
}

/** Returns the lifelines of columns [from, to), each followed by blanks: two after the last of all columns. */
std::string TextLadder::lifelines(std::size_t from, std::size_t to) const {
    std::string line;
    for (std::size_t i = from; i < to; ++i) {
        line += m_strokes.life + blanks(i + 1 < m_layout->names().size() ? m_layout->spacing() - 1 : 2);
    }
    return line;
}

/** Returns the label for this room. A label that loses its end says first that the message is flawed. */
std::string TextLadder::labelOf(const Step& step, std::size_t room) const {
    const std::string label = TextLayout::sLabelOf(step);
    return Utf8::width(label) <= room ? label : shortened((step.isFlawed() ? "! " : "") + label, room);
}

std::string TextLadder::arrow(const Step& step) const {
    const std::size_t columns = std::max(step.from, step.to) - std::min(step.from, step.to);
    const std::size_t room = m_layout->spacing() * columns - 2;
    const std::string label = m_layout->isKeyed() ? "" : " " + labelOf(step, room - 4) + " ";
    const std::size_t shaft = room - Utf8::width(label);
    const std::string begin = repeated(m_strokes.shaft, shaft / 2);
    const std::string end = repeated(m_strokes.shaft, shaft - shaft / 2);
    return step.from < step.to ? begin + label + end + m_strokes.right : m_strokes.left + begin + label + end;
}

void TextLadder::drawGutter(const Call& call, const Step& step) {
    const std::string number = rightAligned(std::to_string(step.index), m_layout->numberWidth());
    const std::string time = rightAligned(m_style.time.of(step, call), m_layout->timeWidth());
    const std::size_t taken = number.size() + 1 + time.size();
    m_out << m_colour(Ink::Faint, number) << ' ' << time << blanks(m_layout->at(0) - std::min(m_layout->at(0), taken));
}

void TextLadder::drawStep(const Call& call, const Step& step) {
    const Ink ink = inkOf(step);
    const std::size_t left = std::min(step.from, step.to);
    const std::size_t right = std::max(step.from, step.to);
    const std::size_t end = call.columns.size();
    const bool isKeyed = m_layout->isKeyed();
    drawGutter(call, step);
    m_out << lifelines(0, left) << m_strokes.life;
    if (left == right && !isKeyed) {
        const std::string label = labelOf(step, m_layout->roomAt(m_layout->at(left) + 4));
        m_out << m_colour(ink, std::string(" ") + m_strokes.loop + " " + label) << '\n';
        return;
    }
    std::string rest = lifelines(right, end);
    if (left == right) {
        rest.replace(0, std::string_view(m_strokes.life).size() + 1, m_strokes.loop);
    } else {
        m_out << m_colour(ink, arrow(step));
    }
    if (!isKeyed) {
        rest.erase(rest.find_last_not_of(' ') + 1);
    }
    m_out << rest << (isKeyed ? m_colour(ink, labelOf(step, m_layout->roomAt(m_layout->at(end - 1) + 3))) : "") << '\n';
}

/** Says after the ladder what is wrong with which messages. */
void TextLadder::drawFlaws(const Call& call) {
    std::map<std::string, std::vector<Piece>> numbers; // of the messages with this flaw
    std::vector<std::string> flaws;
    for (const Step& step : call.steps) {
        if (!step.isFlawed()) {
            continue;
        }
        const auto [known, isNew] = numbers.try_emplace(step.verdict.text());
        std::string number = std::to_string(step.index);
        if (isNew) {
            flaws.push_back(known->first);
            number = rightAligned(number, m_layout->numberWidth());
        } else {
            known->second.back().text += ',';
        }
        known->second.push_back({Ink::Failure, number});
    }
    for (const std::string& flaw : flaws) {
        std::vector<Piece>& pieces = numbers[flaw];
        std::istringstream words(flaw);
        for (std::string word; words >> word;) {
            pieces.push_back({Ink::Failure, word});
        }
        drawPieces(pieces, 1, m_layout->numberWidth() + 1);
    }
}
