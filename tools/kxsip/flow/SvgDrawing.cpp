#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/LadderShape.h"
#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>

namespace {

constexpr int kMargin = 28;
constexpr int kTop = 56; // below the legend
constexpr int kTitleHeight = 80;
constexpr int kBetweenCalls = 36;
constexpr std::size_t kStepsBetweenNames = 30; // so that the names of a long ladder stay visible
constexpr int kBreak = 12;                     // before names that are repeated
constexpr int kNumberEnd = 58;                 // where the message's number ends
constexpr int kTitleLetter = 11;
constexpr int kWidest = 1000;
constexpr const char* kArrow = " \u2192 ";

/** Where the parts of a ladder begin, below its title. */
struct Rows {
    explicit Rows(const LadderShape& shape, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            if (i % kStepsBetweenNames == 0) {
                end += i == 0 ? 0 : kBreak;
                names.push_back(end);
                end += LadderShape::kNamesHeight;
            }
            end += shape.pauseBefore(i).count() > 0 ? LadderShape::kPauseHeight : 0;
            steps.push_back(end);
            end += LadderShape::kStepHeight;
        }
        end += LadderShape::kFootHeight;
    }

    std::vector<int> names;
    std::vector<int> steps;
    int end = 0;
};

/** Draws calls below each other. */
class SvgDrawing {
public:
    SvgDrawing(std::ostream& out, TimeText time) : m_out(out), m_time(time) {}

    void draw(const std::vector<Call>& calls);

private:
    void drawCall(const Call& call, int top, const std::string& id);
    void drawTitle(const Call& call, int width);
    void drawNames(const LadderShape& shape, const Rows& rows, const std::string& id);
    void drawStep(const Call& call, const LadderShape& shape, const Step& step, int top);
    void drawPause(const LadderShape& shape, std::chrono::microseconds length, int top);
    void drawLegend();
    std::string metaText(const Call& call) const;
    int widthOf(const Call& call, const LadderShape& shape) const;
    int timeEnd() const { return m_time.isElapsed() ? 138 : 180; }
    int gutter() const { return timeEnd() + 24; }
    template <class Draw>
    void moved(int x, int y, const Draw& draw, const std::string& id = "");

    std::ostream& m_out;
    TimeText m_time;
    int m_width = 0;
};

/** Draws something at this place. */
template <class Draw>
void SvgDrawing::moved(int x, int y, const Draw& draw, const std::string& id) {
    m_out << "<g" << (id.empty() ? "" : " id=\"" + id + "\"") << " transform=\"translate(" << x << ',' << y << ")\">";
    draw();
    m_out << "</g>\n";
}

std::string SvgDrawing::metaText(const Call& call) const {
    return "Call-ID " + call.id + "  \u00B7  " + m_time.date(call.begin()) + "  \u00B7  " + call.extent();
}

/** Returns a width that is enough for the ladder and, up to a limit, for the title. */
int SvgDrawing::widthOf(const Call& call, const LadderShape& shape) const {
    const auto letters = static_cast<int>(
        std::max({Utf8::width(call.title(kArrow)), Utf8::width(call.result()), Utf8::width(metaText(call)) * 3 / 4}));
    return std::max(gutter() + shape.width() + kMargin, std::min(letters * kTitleLetter + 2 * kMargin, kWidest));
}

void SvgDrawing::draw(const std::vector<Call>& calls) {
    for (const LadderShape::Key& key : LadderShape::sLegend) {
        m_width += key.width;
    }
    m_width += 2 * kMargin;
    std::vector<int> tops = {kTop};
    for (const Call& call : calls) {
        const LadderShape shape(call);
        m_width = std::max(m_width, widthOf(call, shape));
        tops.push_back(tops.back() + kTitleHeight + Rows(shape, call.steps.size()).end + kBetweenCalls);
    }
    m_out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << m_width << "\" height=\"" << tops.back()
          << "\" viewBox=\"0 0 " << m_width << ' ' << tops.back()
          << "\" role=\"img\">\n<title>SIP ladder</title>\n<style>" << LadderShape::sStyle
          << "</style>\n<defs><pattern id=\"pause\" width=\"8\" height=\"7\" patternUnits=\"userSpaceOnUse\">"
             "<rect class=\"page\" width=\"8\" height=\"5\"/></pattern></defs>\n"
             "<rect class=\"page\" width=\"100%\" height=\"100%\"/>\n";
    moved(kMargin, 20, [this] { drawLegend(); });
    for (std::size_t i = 0; i < calls.size(); ++i) {
        drawCall(calls[i], tops[i], "names-" + std::to_string(i));
    }
    m_out << "</svg>\n";
}

void SvgDrawing::drawLegend() {
    int x = 0;
    for (const LadderShape::Key& key : LadderShape::sLegend) {
        moved(x, 0, [&] {
            LadderShape::sDrawKey(m_out, key);
            m_out << "<text class=\"key\" x=\"" << LadderShape::kKeyWidth + 7 << "\" y=\""
                  << LadderShape::kKeyHeight / 2 + 4 << "\">" << key.text << "</text>";
        });
        x += key.width;
    }
}

void SvgDrawing::drawCall(const Call& call, int top, const std::string& id) {
    const LadderShape shape(call);
    const Rows rows(shape, call.steps.size());
    moved(kMargin, top, [&] { drawTitle(call, widthOf(call, shape)); });
    moved(0, top + kTitleHeight, [&] {
        moved(gutter(), LadderShape::kBoxHeight,
              [&] { shape.drawLifelines(m_out, rows.end - LadderShape::kBoxHeight - LadderShape::kFootHeight / 2); });
        drawNames(shape, rows, id);
        for (std::size_t i = 0; i < call.steps.size(); ++i) {
            if (const auto pause = shape.pauseBefore(i); pause.count() > 0) {
                drawPause(shape, pause, rows.steps[i] - LadderShape::kPauseHeight);
            }
            drawStep(call, shape, call.steps[i], rows.steps[i]);
        }
    });
}

void SvgDrawing::drawTitle(const Call& call, int width) {
    const auto letters = static_cast<std::size_t>((width - 2 * kMargin) / kTitleLetter);
    m_out << "<text class=\"title\" y=\"18\">" << Utf8::escaped(Utf8::shortened(call.title(kArrow), letters))
          << "</text><text class=\"result " << LadderShape::sClassOf(call) << "\" y=\"40\">"
          << Utf8::escaped(Utf8::shortened(call.result(), letters)) << "</text><text class=\"meta\" y=\"60\">"
          << Utf8::escaped(Utf8::shortened(metaText(call), letters * 4 / 3 + 2)) << "</text>";
}

/** The names are drawn once; wherever else they are seen, they are used again. */
void SvgDrawing::drawNames(const LadderShape& shape, const Rows& rows, const std::string& id) {
    moved(
        gutter(), 0, [&] { shape.drawNames(m_out); }, id);
    std::for_each(rows.names.begin() + 1, rows.names.end(),
                  [&](int top) { m_out << "<use href=\"#" << id << "\" y=\"" << top << "\"/>\n"; });
}

void SvgDrawing::drawPause(const LadderShape& shape, std::chrono::microseconds length, int top) {
    m_out << "<rect fill=\"url(#pause)\" x=\"" << gutter() << "\" y=\"" << top << "\" width=\"" << shape.width()
          << "\" height=\"" << LadderShape::kPauseHeight << "\"/><text class=\"pause\" text-anchor=\"end\" x=\""
          << timeEnd() << "\" y=\"" << top + LadderShape::kPauseHeight / 2 + 4 << "\">+" << secondsText(length)
          << "</text>\n";
}

void SvgDrawing::drawStep(const Call& call, const LadderShape& shape, const Step& step, int top) {
    const std::string flaw = step.verdict.text();
    m_out << "<g class=\"step " << LadderShape::sClassOf(step) << (step.repeats ? " again" : "")
          << "\" transform=\"translate(0," << top << ")\"><title>" << Utf8::escaped(flaw.empty() ? "" : flaw + "\n\n")
          << Utf8::escaped(step.text) << "</title><rect class=\"hit\" x=\"8\" width=\"" << gutter() + shape.width() - 8
          << "\" height=\"" << LadderShape::kStepHeight
          << "\" rx=\"4\"/><text class=\"number\" text-anchor=\"end\" x=\"" << kNumberEnd << "\" y=\"29\">"
          << step.index << "</text><text class=\"time\" text-anchor=\"end\" x=\"" << timeEnd() << "\" y=\"29\">"
          << m_time.of(step, call) << "</text>";
    moved(gutter(), 0, [&] { shape.drawArrow(m_out, step); });
    m_out << "</g>\n";
}

} // namespace

void drawSvg(std::ostream& out, const std::vector<Call>& calls, TimeText time) {
    SvgDrawing(out, time).draw(calls);
}
