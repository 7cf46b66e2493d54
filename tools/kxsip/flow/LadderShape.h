#pragma once

#include "tools/kxsip/flow/Call.h"

#include <ostream>
#include <string>

/** Draws the parts of a call's ladder as SVG elements, each from y = 0 down. The caller puts them below each other.
    Lengths are in pixels. */
class LadderShape {
public:
    static constexpr int kNamesHeight = 56;
    static constexpr int kStepHeight = 36;
    static constexpr int kPauseHeight = 26;
    static constexpr int kFootHeight = 14;
    static constexpr int kLegendHeight = 20;
    static constexpr int kLegendWidth = 560;
    static constexpr int kMargin = 28;

    explicit LadderShape(const Call& call);

    int width() const;

    /** Draws the boxes with the names of the columns. */
    void drawNames(std::ostream& out) const;
    /** Draws one message. */
    void drawStep(std::ostream& out, const Step& step) const;
    /** Draws a time without messages. */
    void drawPause(std::ostream& out, std::chrono::microseconds length) const;
    /** Draws the ends of the lifelines. */
    void drawFoot(std::ostream& out) const;

    /** Returns the time without messages before this step, 0 if it is too short to be drawn. */
    std::chrono::microseconds pauseBefore(std::size_t step) const;

    /** Draws the legend of the colours. */
    static void sDrawLegend(std::ostream& out);
    /** Returns the CSS class for the colour of a step: "req", "pro", "ok" or "bad". */
    static const char* sClassOf(const Step& step);
    /** Returns the CSS class for the result of a call. */
    static const char* sClassOf(const Call& call);
    /** The style sheet of all parts, light and dark. */
    static const char* const sStyle;

private:
    int at(std::size_t column) const;
    void drawLifelines(std::ostream& out, int height, const char* className) const;
    void drawArrow(std::ostream& out, const Step& step) const;
    void drawLoop(std::ostream& out, const Step& step) const;
    void drawLabel(std::ostream& out, const Step& step, int x, const char* anchor, int room) const;

    const Call& m_call;
    int m_spacing;
};
