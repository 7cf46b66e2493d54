#include "tools/kxsip/flow/LadderShape.h"

#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <array>

namespace {

constexpr int kNumberEnd = 58; // where the message's number ends
constexpr int kTimeEnd = 138;
constexpr int kGutter = 162; // width before the first box
constexpr int kBoxHeight = 44;
constexpr int kNarrowest = 230;
constexpr int kWidest = 430;
constexpr int kLetter = 8; // approximate width of a character of a label
constexpr int kNameLetter = 8;
constexpr int kArrowY = 25;
constexpr int kHead = 9; // length of an arrowhead
constexpr int kHeadHalf = 5;
constexpr int kLoopWidth = 34;
constexpr std::chrono::seconds kPause(1);

int lengthOf(std::string_view text) {
    return static_cast<int>(Utf8::length(text));
}

std::string labelOf(const Step& step) {
    const std::string remark = step.remark();
    return step.facts.label() + (remark.empty() ? "" : "  " + remark);
}

int boxWidth(const Call& call) {
    int letters = 18;
    for (const Column& column : call.columns) {
        letters = std::max(letters, lengthOf(column.name));
    }
    return letters * kNameLetter + 24;
}

int spacingOf(const Call& call) {
    int spacing = std::max(kNarrowest, boxWidth(call) + 24);
    for (const Step& step : call.steps) {
        spacing = std::max(spacing, std::min(lengthOf(labelOf(step)) * kLetter + 60, kWidest));
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
.meta,.time,.number,.port,.remark,.pause{fill:#66727f}
.meta,.port,.remark,.pause,.key{font-size:12px}
.time,.number,.pause{font-family:"SF Mono",Consolas,"DejaVu Sans Mono",monospace;font-size:12px}
.number{fill:#9aa5b1}
.page{fill:#ffffff}
.box{fill:#f4f6f8;stroke:#c3ccd5}
.name{font-weight:600}
.life{stroke:#c3ccd5;stroke-width:1.5}
.idle{stroke-dasharray:2 5}
.hit{fill:#ffffff;fill-opacity:0}
.step:hover .hit{fill:#eaf1fb;fill-opacity:1}
.what{font-weight:600;paint-order:stroke;stroke:#ffffff;stroke-width:5px;stroke-linejoin:round}
.remark{font-weight:400}
.shaft{fill:none;stroke-width:1.75}
.again .shaft{stroke-dasharray:6 4}
.again .what{font-weight:400}
.req .shaft{stroke:#1d5fbf}.req polygon,.req .what,text.req,tspan.req{fill:#1d5fbf}
.pro .shaft{stroke:#a86400}.pro polygon,.pro .what,text.pro,tspan.pro{fill:#a86400}
.ok .shaft{stroke:#18794e}.ok polygon,.ok .what,text.ok,tspan.ok{fill:#18794e}
.bad .shaft{stroke:#c4291c}.bad polygon,.bad .what,text.bad,tspan.bad{fill:#c4291c}
.what .remark{fill:#66727f}
@media (prefers-color-scheme:dark){
text{fill:#e4e8ec}
.meta,.time,.port,.remark,.pause,.what .remark{fill:#98a4b0}
.number{fill:#6d7985}
.page{fill:#15191e}
.box{fill:#21272e;stroke:#46515c}
.life{stroke:#46515c}
.hit{fill:#15191e}
.step:hover .hit{fill:#212b38}
.what{stroke:#15191e}
.req .shaft{stroke:#79b0ff}.req polygon,.req .what,text.req,tspan.req{fill:#79b0ff}
.pro .shaft{stroke:#e6b04d}.pro polygon,.pro .what,text.pro,tspan.pro{fill:#e6b04d}
.ok .shaft{stroke:#57c78d}.ok polygon,.ok .what,text.ok,tspan.ok{fill:#57c78d}
.bad .shaft{stroke:#ff8177}.bad polygon,.bad .what,text.bad,tspan.bad{fill:#ff8177}
}
)";

LadderShape::LadderShape(const Call& call) : m_call(call), m_spacing(spacingOf(call)) {}

int LadderShape::at(std::size_t column) const {
    return kGutter + boxWidth(m_call) / 2 + m_spacing * static_cast<int>(column);
}

int LadderShape::width() const {
    const int boxes = at(m_call.columns.size() - 1) + std::max(boxWidth(m_call) / 2, kLoopWidth) + kMargin;
    return std::max(boxes, kLegendWidth + 2 * kMargin);
}

const char* LadderShape::sClassOf(const Step& step) {
    if (!step.error.empty() || step.facts.code >= 300) {
        return "bad";
    }
    return step.facts.code >= 200 ? "ok" : step.facts.code > 0 ? "pro" : "req";
}

const char* LadderShape::sClassOf(const Call& call) {
    return call.resultCode() >= 200 && call.resultCode() < 300 ? "ok" : "bad";
}

void LadderShape::drawLifelines(std::ostream& out, int height, const char* className) const {
    for (std::size_t i = 0; i < m_call.columns.size(); ++i) {
        out << "<line class=\"" << className << "\" x1=\"" << at(i) << "\" y1=\"0\" x2=\"" << at(i) << "\" y2=\""
            << height << "\"/>";
    }
}

void LadderShape::drawNames(std::ostream& out) const {
    const int width = boxWidth(m_call);
    for (std::size_t i = 0; i < m_call.columns.size(); ++i) {
        const Column& column = m_call.columns[i];
        const std::string ports = column.portText();
        const int x = at(i);
        out << "<rect class=\"box\" x=\"" << x - width / 2 << "\" y=\"0.5\" width=\"" << width << "\" height=\""
            << kBoxHeight << "\" rx=\"6\"/><text class=\"name\" text-anchor=\"middle\" x=\"" << x << "\" y=\""
            << (ports.empty() ? 27 : 19) << "\">" << Utf8::escaped(column.name) << "</text>";
        if (!ports.empty()) {
            out << "<text class=\"port\" text-anchor=\"middle\" x=\"" << x << "\" y=\"36\">" << ports << "</text>";
        }
        out << "<line class=\"life\" x1=\"" << x << "\" y1=\"" << kBoxHeight + 1 << "\" x2=\"" << x << "\" y2=\""
            << kNamesHeight << "\"/>\n";
    }
}

void LadderShape::drawStep(std::ostream& out, const Step& step) const {
    const int baseline = kArrowY + 4;
    out << "<rect class=\"hit\" x=\"8\" y=\"0\" width=\"" << width() - 16 << "\" height=\"" << kStepHeight
        << "\" rx=\"4\"/>";
    drawLifelines(out, kStepHeight, "life");
    out << "<text class=\"number\" text-anchor=\"end\" x=\"" << kNumberEnd << "\" y=\"" << baseline << "\">"
        << step.index << "</text><text class=\"time\" text-anchor=\"end\" x=\"" << kTimeEnd << "\" y=\"" << baseline
        << "\">" << secondsText(step.origin.time - m_call.begin()) << "</text>";
    if (step.from == step.to) {
        drawLoop(out, step);
    } else {
        drawArrow(out, step);
    }
}

void LadderShape::drawArrow(std::ostream& out, const Step& step) const {
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

void LadderShape::drawLabel(std::ostream& out, const Step& step, int x, const char* anchor, int room) const {
    const auto letters = static_cast<std::size_t>(std::max(room / kLetter, 4));
    const std::string label = Utf8::shortened(step.facts.label(), letters);
    const std::string remark = Utf8::length(label) + 12 < letters ? step.remark() : "";
    out << "<text class=\"what\" text-anchor=\"" << anchor << "\" x=\"" << x << "\" y=\"" << kArrowY - 7 << "\">"
        << Utf8::escaped(label);
    if (!remark.empty()) {
        out << "<tspan class=\"remark\" dx=\"7\">" << Utf8::escaped(remark) << "</tspan>";
    }
    out << "</text>";
}

void LadderShape::drawPause(std::ostream& out, std::chrono::microseconds length) const {
    drawLifelines(out, kPauseHeight, "life idle");
    out << "<text class=\"pause\" text-anchor=\"end\" x=\"" << kTimeEnd << "\" y=\"" << kPauseHeight / 2 + 4 << "\">+"
        << secondsText(length) << "</text>";
}

void LadderShape::drawFoot(std::ostream& out) const {
    drawLifelines(out, kFootHeight / 2, "life");
    for (std::size_t i = 0; i < m_call.columns.size(); ++i) {
        out << "<line class=\"life\" x1=\"" << at(i) - 8 << "\" y1=\"" << kFootHeight / 2 << "\" x2=\"" << at(i) + 8
            << "\" y2=\"" << kFootHeight / 2 << "\"/>";
    }
}

std::chrono::microseconds LadderShape::pauseBefore(std::size_t step) const {
    if (step == 0) {
        return {};
    }
    const std::chrono::microseconds length = m_call.steps[step].origin.time - m_call.steps[step - 1].origin.time;
    return length < kPause ? std::chrono::microseconds() : length;
}

void LadderShape::sDrawLegend(std::ostream& out) {
    struct Key {
        const char* className;
        const char* text;
        int width;
    };
    constexpr std::array<Key, 5> keys = {{{"req", "request", 100},
                                          {"pro", "1xx", 72},
                                          {"ok", "2xx", 72},
                                          {"bad", "3xx to 6xx, refused", 170},
                                          {"req again", "retransmission", 146}}};
    int x = 0;
    for (const Key& key : keys) {
        out << "<g class=\"" << key.className << "\">";
        drawLine(out, x, x + 26 - kHead, kLegendHeight / 2);
        drawHead(out, x + 26, kLegendHeight / 2, 1);
        out << "</g><text class=\"key\" x=\"" << x + 33 << "\" y=\"" << kLegendHeight / 2 + 4 << "\">" << key.text
            << "</text>";
        x += key.width;
    }
}
