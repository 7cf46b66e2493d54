#include "tools/kxsip/flow/LadderShape.h"

#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <array>

namespace {

constexpr int kNarrowest = 230;
constexpr int kWidest = 430;
constexpr int kWidestCrowded = 190;
constexpr std::size_t kMostRoomy = 5; // columns; more make a ladder crowded
constexpr int kBetweenBoxes = 24;
constexpr int kLetter = 8; // approximate width of a character of a label
constexpr int kNameLetter = 8;
constexpr int kLeastLetters = 14; // of a name
constexpr int kMostLetters = 30;
constexpr int kArrowY = 25;
constexpr int kHead = 9; // length of an arrowhead
constexpr int kHeadHalf = 5;
constexpr int kLoopWidth = 34;
constexpr std::chrono::seconds kPause(1);

int lengthOf(std::string_view text) {
    return static_cast<int>(Utf8::width(text));
}

std::string labelOf(const Step& step) {
    const std::string remark = step.remark();
    return step.facts.label() + (remark.empty() ? "" : "  " + remark);
}

std::vector<std::string> namesOf(const Call& call) {
    std::vector<std::string> names = Column::sShortNames(call.columns, kMostLetters);
    if (names.empty()) { // some differ only where the others are cut
        for (const Column& column : call.columns) {
            names.push_back(column.name);
        }
    }
    return names;
}

int boxWidthOf(const std::vector<std::string>& names) {
    int letters = kLeastLetters;
    for (const std::string& name : names) {
        letters = std::max(letters, lengthOf(name));
    }
    return letters * kNameLetter + 24;
}

/** Returns a spacing with room for the boxes and, up to a limit, for the labels. */
int spacingOf(const Call& call, int boxWidth) {
    const bool isCrowded = call.columns.size() > kMostRoomy;
    const int widest = isCrowded ? kWidestCrowded : kWidest;
    int spacing = std::max(isCrowded ? 0 : kNarrowest, boxWidth + kBetweenBoxes);
    for (const Step& step : call.steps) {
        const auto gaps = static_cast<int>(std::max(step.from, step.to) - std::min(step.from, step.to));
        spacing = std::max(spacing, std::min((lengthOf(labelOf(step)) * kLetter + 60) / std::max(gaps, 1), widest));
    }
    return spacing;
}

/** Draws an arrowhead, to the right if `way` is 1, to the left if it is -1. */
void drawHead(std::ostream& out, int tip, int y, int way) {
    const int back = tip - way * kHead;
    out << "<polygon points=\"" << tip << ',' << y << ' ' << back << ',' << y - kHeadHalf << ' ' << back << ','
        << y + kHeadHalf << "\"/>";
}

void drawLine(std::ostream& out, int from, int to, int y) {
    out << "<line class=\"shaft\" x1=\"" << from << "\" y1=\"" << y << "\" x2=\"" << to << "\" y2=\"" << y << "\"/>";
}

} // namespace

const char* const LadderShape::sStyle = R"(
text{font-family:Inter,"Segoe UI","Helvetica Neue",Arial,"DejaVu Sans",sans-serif;font-size:13px;fill:#1f2933}
.title{font-size:17px;font-weight:600}
.result{font-size:14px;font-weight:600}
.meta,.time,.number,.port,.remark,.pause{fill:#5c6874}
.meta,.port,.remark,.pause,.key{font-size:12px}
.time,.number,.pause{font-family:"SF Mono",Consolas,"DejaVu Sans Mono",monospace;font-size:12px}
.page{fill:#ffffff}
.box{fill:#f4f6f8;stroke:#c3ccd5}
.name{font-weight:600}
.life{fill:none;stroke:#c3ccd5;stroke-width:1.5}
.hit{fill:#1d5fbf;fill-opacity:0}
.step:hover .hit{fill-opacity:.09}
.what{font-weight:600;paint-order:stroke;stroke:#ffffff;stroke-width:5px;stroke-linejoin:round}
.remark{font-weight:400}
.shaft{fill:none;stroke-width:1.75}
.again .shaft{stroke-dasharray:6 4}
.again .what{font-weight:400}
.req .shaft{stroke:#1d5fbf}.req polygon,.req .what,text.req,tspan.req{fill:#1d5fbf}
.pro .shaft{stroke:#a86400}.pro polygon,.pro .what,text.pro,tspan.pro{fill:#a86400}
.ok .shaft{stroke:#18794e}.ok polygon,.ok .what,text.ok,tspan.ok{fill:#18794e}
.bad .shaft{stroke:#c4291c}.bad polygon,.bad .what,text.bad,tspan.bad{fill:#c4291c}
.what .remark{fill:#5c6874}
.what .flaw{fill:#c4291c}
@media (prefers-color-scheme:dark){
text{fill:#e4e8ec}
.meta,.time,.number,.port,.remark,.pause,.what .remark{fill:#98a4b0}
.page{fill:#15191e}
.box{fill:#21272e;stroke:#46515c}
.life{stroke:#46515c}
.hit{fill:#79b0ff}
.what{stroke:#15191e}
.req .shaft{stroke:#79b0ff}.req polygon,.req .what,text.req,tspan.req{fill:#79b0ff}
.pro .shaft{stroke:#e6b04d}.pro polygon,.pro .what,text.pro,tspan.pro{fill:#e6b04d}
.ok .shaft{stroke:#57c78d}.ok polygon,.ok .what,text.ok,tspan.ok{fill:#57c78d}
.what .flaw{fill:#ff8177}
.bad .shaft{stroke:#ff8177}.bad polygon,.bad .what,text.bad,tspan.bad{fill:#ff8177}
}
)";

const std::array<LadderShape::Key, 5> LadderShape::sLegend = {{{"req", "request", 100},
                                                               {"pro", "1xx", 72},
                                                               {"ok", "2xx", 72},
                                                               {"bad", "3xx to 6xx, refused, unusable", 226},
                                                               {"req again", "retransmission", 146}}};

LadderShape::LadderShape(const Call& call)
    : m_call(call),
      m_names(namesOf(call)),
      m_boxWidth(boxWidthOf(m_names)),
      m_spacing(spacingOf(call, m_boxWidth)),
      m_width(at(call.columns.size() - 1) + m_boxWidth / 2) {
    for (const Step& step : call.steps) {
        const Span span = spanOf(step);
        m_width = std::max(m_width, span.left + span.width);
    }
}

LadderShape::Span LadderShape::spanOf(const Step& step) const {
    const int left = at(std::min(step.from, step.to));
    const int label = std::min(lengthOf(labelOf(step)) * kLetter, kWidest);
    return {left, step.from == step.to ? kLoopWidth + 8 + label : at(std::max(step.from, step.to)) - left};
}

const char* LadderShape::sClassOf(const Step& step) {
    if (step.isUseless() || step.facts.code >= 300) {
        return "bad";
    }
    return step.facts.code >= 200 ? "ok" : step.facts.code > 0 ? "pro" : "req";
}

const char* LadderShape::sClassOf(const Call& call) {
    return call.resultCode() >= 200 && call.resultCode() < 300 ? "ok" : "bad";
}

void LadderShape::drawLifelines(std::ostream& out, int height) const {
    out << "<path class=\"life\" d=\"";
    for (std::size_t i = 0; i < m_call.columns.size(); ++i) {
        out << 'M' << at(i) << " 0V" << height << 'm' << -kFootWidth / 2 << " 0h" << kFootWidth;
    }
    out << "\"/>";
}

void LadderShape::drawNames(std::ostream& out) const {
    for (std::size_t i = 0; i < m_call.columns.size(); ++i) {
        const std::string ports = m_call.columns[i].portText();
        const int x = at(i);
        out << "<rect class=\"box\" x=\"" << x - m_boxWidth / 2 << "\" y=\"0.5\" width=\"" << m_boxWidth
            << "\" height=\"" << kBoxHeight << "\" rx=\"6\"/><text class=\"name\" text-anchor=\"middle\" x=\"" << x
            << "\" y=\"" << (ports.empty() ? 27 : 19) << "\">" << Utf8::escaped(nameOf(i)) << "</text>";
        if (!ports.empty()) {
            out << "<text class=\"port\" text-anchor=\"middle\" x=\"" << x << "\" y=\"36\">" << ports << "</text>";
        }
        out << '\n';
    }
}

void LadderShape::drawArrow(std::ostream& out, const Step& step) const {
    if (step.from == step.to) {
        drawLoop(out, step);
        return;
    }
    const int way = step.from < step.to ? 1 : -1;
    const int from = at(step.from);
    const int to = at(step.to);
    drawLine(out, from, to - way * kHead, kArrowY);
    drawHead(out, to - way, kArrowY, way);
    drawLabel(out, step, (from + to) / 2, "middle", (to - from) * way - 2 * kHead);
}

void LadderShape::drawLoop(std::ostream& out, const Step& step) const {
    const int x = at(step.from);
    out << "<path class=\"shaft\" d=\"M" << x << ' ' << kArrowY - 12 << "h" << kLoopWidth - 6 << "q6 0 6 6q0 6 -6 6h-"
        << kLoopWidth - 6 - kHead << "\"/>";
    drawHead(out, x + 1, kArrowY, -1);
    drawLabel(out, step, x + kLoopWidth + 8, "start", kWidest);
}

/** A remark that has no room with the label is shortened, like the label. */
void LadderShape::drawLabel(std::ostream& out, const Step& step, int x, const char* anchor, int room) const {
    const auto letters = static_cast<std::size_t>(std::max(room / kLetter, kLeastLetters));
    const std::string remark = step.remark();
    const std::size_t kept = std::min(Utf8::width(remark), letters / 2);
    const std::string label = Utf8::shortened(step.facts.label(), letters - (kept > 0 ? kept + 1 : 0));
    const std::size_t rest = letters - std::min(Utf8::width(label) + 1, letters);
    out << "<text class=\"what\" text-anchor=\"" << anchor << "\" x=\"" << x << "\" y=\"" << kArrowY - 7 << "\">"
        << Utf8::escaped(label);
    if (!remark.empty()) {
        out << "<tspan class=\"remark" << (step.isFlawed() ? " flaw" : "") << "\" dx=\"7\">"
            << Utf8::escaped(Utf8::shortened(remark, rest)) << "</tspan>";
    }
    out << "</text>";
}

std::chrono::microseconds LadderShape::pauseBefore(std::size_t step) const {
    if (step == 0) {
        return {};
    }
    const std::chrono::microseconds length = m_call.steps[step].origin.time - m_call.steps[step - 1].origin.time;
    return length < kPause ? std::chrono::microseconds() : length;
}

void LadderShape::sDrawKey(std::ostream& out, const Key& key) {
    out << "<g class=\"" << key.className << "\">";
    drawLine(out, 0, kKeyWidth - kHead, kKeyHeight / 2);
    drawHead(out, kKeyWidth, kKeyHeight / 2, 1);
    out << "</g>";
}
