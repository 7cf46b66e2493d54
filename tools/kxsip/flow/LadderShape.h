#pragma once

#include "tools/kxsip/flow/Call.h"

#include <ostream>
#include <string>

/** The parts of a call's ladder as SVG elements, each drawn from y = 0 down; whoever puts them one below the other gets
    the ladder. Lengths are pixels. */
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

    /** The boxes with the columns' names. */
    void drawNames(std::ostream& out) const;
    /** One message. */
    void drawStep(std::ostream& out, const Step& step) const;
    /** A stretch of time in which nothing came. */
    void drawPause(std::ostream& out, std::chrono::microseconds length) const;
    /** The ends of the lifelines. */
    void drawFoot(std::ostream& out) const;

    /** How long nothing came in front of this step; 0 where that is not worth to be drawn. */
    std::chrono::microseconds pauseBefore(std::size_t step) const;

    /** What the colours mean. */
    static void sDrawLegend(std::ostream& out);
    /** The class of a step's colour: "req", "pro", "ok" or "bad". */
    static const char* sClassOf(const Step& step);
    /** The class of a call's result. */
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
