#include "tools/kxsip/flow/TextLadder.h"

#include "tools/kxsip/Printable.h"
#include "tools/kxsip/flow/Utf8.h"
#include "util/KxAscii.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::size_t kGutter = 20; ///< Width before the first lifeline, for number and time.
constexpr std::size_t kNarrowest = 24;
constexpr std::size_t kWidest = 48;

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

std::string labelOf(const Step& step) {
    const std::string remark = step.remark();
    return step.facts.label() + (remark.empty() ? "" : " (" + remark + ")");
}

std::size_t spacingOf(const Call& call) {
    std::size_t spacing = kNarrowest;
    for (const Column& column : call.columns) {
        spacing = std::max(spacing, column.name.size() + 3);
    }
    for (const Step& step : call.steps) {
        spacing = std::max(spacing, std::min(Utf8::length(labelOf(step)) + 8, kWidest));
    }
    return spacing;
}

} // namespace

const TextLadder::Strokes TextLadder::sLines = {"\u2502", "\u2500", "\u25C0", "\u25B6", "\u21BA"};
const TextLadder::Strokes TextLadder::sAscii = {"|", "-", "<", ">", "@"};

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

TextLadder::TextLadder(std::ostream& out, Colour colour, bool lines)
    : m_out(out), m_colour(colour), m_strokes(lines ? sLines : sAscii) {}

void TextLadder::draw(const Call& call) {
    m_out << (m_first ? "" : "\n");
    m_first = false;
    m_spacing = spacingOf(call);
    drawTitle(call);
    drawNames(call);
    for (const Step& step : call.steps) {
        drawStep(call, step);
    }
}

void TextLadder::drawTitle(const Call& call) {
    const Ink ink = call.resultCode() == 0 ? Ink::Failure : Colour::sInkOf(call.resultCode());
    m_out << m_colour(Ink::Place, call.title()) << "  " << m_colour(ink, call.result()) << '\n'
          << m_colour(Ink::Faint, "Call-ID " + printable(call.id) + ", " + std::to_string(call.steps.size()) +
                                      " messages in " + secondsText(call.duration()) + " s from " +
                                      dateText(call.begin()))
          << "\n\n";
}

std::size_t TextLadder::at(std::size_t column) const {
    return kGutter + m_spacing * column;
}

void TextLadder::drawNames(const Call& call) {
    std::string names;
    std::string ports;
    const auto put = [](std::string& line, std::size_t centre, const std::string& text) {
        line += blanks(std::max(centre, text.size() / 2) - text.size() / 2 -
                       std::min(line.size(), centre - text.size() / 2));
        line += text;
    };
    for (std::size_t i = 0; i < call.columns.size(); ++i) {
        put(names, at(i), call.columns[i].name);
        put(ports, at(i), call.columns[i].portText());
    }
    m_out << m_colour(Ink::Place, names) << '\n';
    if (ports.find_first_not_of(' ') != std::string::npos) {
        m_out << m_colour(Ink::Faint, ports) << '\n';
    }
}

/** Returns the lifelines of columns [from, to), each followed by blanks. */
std::string TextLadder::lifelines(std::size_t from, std::size_t to) const {
    std::string line;
    for (std::size_t i = from; i < to; ++i) {
        line += m_strokes.life + blanks(m_spacing - 1);
    }
    return line;
}

std::string TextLadder::arrow(const Step& step) const {
    const std::size_t room = m_spacing * (std::max(step.from, step.to) - std::min(step.from, step.to)) - 2;
    const std::string label = " " + Utf8::shortened(labelOf(step), room - 4) + " ";
    const std::size_t shaft = room - Utf8::length(label);
    const std::string begin = repeated(m_strokes.shaft, shaft / 2);
    const std::string end = repeated(m_strokes.shaft, shaft - shaft / 2);
    return step.from < step.to ? begin + label + end + m_strokes.right : m_strokes.left + begin + label + end;
}

void TextLadder::drawStep(const Call& call, const Step& step) {
    const Ink ink = step.repeats ? Ink::Faint : step.error.empty() ? Colour::sInkOf(step.facts.code) : Ink::Failure;
    const std::size_t left = std::min(step.from, step.to);
    const std::size_t right = std::max(step.from, step.to);
    m_out << m_colour(Ink::Faint, rightAligned(std::to_string(step.index), 6)) << ' '
          << rightAligned(secondsText(step.origin.time - call.begin()), 10) << blanks(kGutter - 17)
          << lifelines(0, left) << m_strokes.life;
    if (left == right) {
        m_out << m_colour(ink, std::string(" ") + m_strokes.loop + " " + labelOf(step)) << '\n';
        return;
    }
    m_out << m_colour(ink, arrow(step));
    std::string rest = lifelines(right, call.columns.size());
    rest.erase(rest.find_last_not_of(' ') + 1);
    m_out << rest << '\n';
}
