#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/LadderShape.h"
#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr int kTitleHeight = 80;
constexpr int kBetweenCalls = 36;
constexpr std::size_t kStepsBetweenNames = 30; // so that the names of a long ladder stay visible
constexpr int kBreak = 12;                     // before names that are repeated
constexpr int kTitleLetter = 11;
constexpr int kWidest = 1000;
constexpr const char* kArrow = " \u2192 ";

/** Writes parts below each other. */
class Stack {
public:
    explicit Stack(std::ostream& out, int top) : m_out(out), m_y(top) {}

    template <class Draw>
    void add(int height, const Draw& draw) {
        m_out << "<g transform=\"translate(0," << m_y << ")\">";
        draw();
        m_out << "</g>\n";
        m_y += height;
    }
    void skip(int height) { m_y += height; }
    int height() const { return m_y; }

private:
    std::ostream& m_out;
    int m_y;
};

std::string metaText(const Call& call) {
    return "Call-ID " + call.id + "  \u00B7  " + dateText(call.begin()) + "  \u00B7  " +
           std::to_string(call.steps.size()) + " messages in " + secondsText(call.duration()) + " s";
}

/** Returns a width that is enough for the ladder and, up to a limit, for the title. */
int widthOf(const Call& call) {
    const auto letters =
        static_cast<int>(std::max(Utf8::length(call.title(kArrow)), Utf8::length(metaText(call)) * 3 / 4));
    return std::max(LadderShape(call).width(), std::min(letters * kTitleLetter + 2 * LadderShape::kMargin, kWidest));
}

void drawTitle(std::ostream& out, const Call& call) {
    const auto letters = static_cast<std::size_t>((widthOf(call) - 2 * LadderShape::kMargin) / kTitleLetter);
    const int x = LadderShape::kMargin;
    out << "<text class=\"title\" x=\"" << x << "\" y=\"18\">"
        << Utf8::escaped(Utf8::shortened(call.title(kArrow), letters)) << "</text><text class=\"result "
        << LadderShape::sClassOf(call) << "\" x=\"" << x << "\" y=\"40\">"
        << Utf8::escaped(Utf8::shortened(call.result(), letters)) << "</text><text class=\"meta\" x=\"" << x
        << "\" y=\"60\">" << Utf8::escaped(Utf8::shortened(metaText(call), letters * 4 / 3 + 2)) << "</text>";
}

void drawStep(std::ostream& out, const LadderShape& shape, const Step& step) {
    out << "<g class=\"step " << LadderShape::sClassOf(step) << (step.repeats ? " again" : "") << "\"><title>"
        << Utf8::escaped(step.error.empty() ? "" : "refused: " + step.error + "\n\n") << Utf8::escaped(step.text)
        << "</title>";
    shape.drawStep(out, step);
    out << "</g>";
}

void drawCall(std::ostream& out, Stack& stack, const Call& call) {
    const LadderShape shape(call);
    stack.add(kTitleHeight, [&] { drawTitle(out, call); });
    for (std::size_t i = 0; i < call.steps.size(); ++i) {
        if (i % kStepsBetweenNames == 0) {
            stack.skip(i == 0 ? 0 : kBreak);
            stack.add(LadderShape::kNamesHeight, [&] { shape.drawNames(out); });
        }
        if (const auto pause = shape.pauseBefore(i); pause.count() > 0) {
            stack.add(LadderShape::kPauseHeight, [&] { shape.drawPause(out, pause); });
        }
        stack.add(LadderShape::kStepHeight, [&] { drawStep(out, shape, call.steps[i]); });
    }
    stack.add(LadderShape::kFootHeight, [&] { shape.drawFoot(out); });
}

} // namespace

std::string svgDrawing(const std::vector<Call>& calls) {
    std::ostringstream body;
    int width = 0;
    Stack stack(body, 20);
    stack.add(LadderShape::kLegendHeight + 16, [&] {
        body << "<g transform=\"translate(" << LadderShape::kMargin << ",0)\">";
        LadderShape::sDrawLegend(body);
        body << "</g>";
    });
    for (const Call& call : calls) {
        drawCall(body, stack, call);
        stack.skip(kBetweenCalls);
        width = std::max(width, widthOf(call));
    }
    std::ostringstream out;
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << stack.height()
        << "\" viewBox=\"0 0 " << width << ' ' << stack.height()
        << "\" role=\"img\">\n<title>SIP ladder</title>\n<style>" << LadderShape::sStyle
        << "</style>\n<rect class=\"page\" width=\"100%\" height=\"100%\"/>\n"
        << body.str() << "</svg>\n";
    return out.str();
}
