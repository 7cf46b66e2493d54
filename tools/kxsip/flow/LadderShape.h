#pragma once

#include "tools/kxsip/flow/Call.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

/** Draws the parts of a call's ladder as SVG elements, each from y = 0 down. The caller puts them below each other.
    Lengths are in pixels; x = 0 is where the box of the first column begins. */
class LadderShape {
public:
    static constexpr int kBoxHeight = 44;
    static constexpr int kNamesHeight = 56;
    static constexpr int kStepHeight = 36;
    static constexpr int kPauseHeight = 26;
    static constexpr int kFootHeight = 14;
    static constexpr int kFootWidth = 16;
    static constexpr int kKeyWidth = 26;
    static constexpr int kKeyHeight = 20;

    /** An entry of the legend of the colours. */
    struct Key {
        const char* className;
        const char* text;
        int width; ///< Of the arrow and the text.
    };
    /** From where to where a message's arrow reaches. */
    struct Span {
        int left;
        int width;
    };

    explicit LadderShape(const Call& call);

    int width() const { return m_width; }
    int spacing() const { return m_spacing; }
    int boxWidth() const { return m_boxWidth; }
    /** Returns where the lifeline of a column is. */
    int at(std::size_t column) const { return m_boxWidth / 2 + m_spacing * static_cast<int>(column); }
    Span spanOf(const Step& step) const;
    /** Returns the name of a column as it fits into its box. */
    const std::string& nameOf(std::size_t column) const { return m_names[column]; }

    /** Draws the boxes with the names of the columns. */
    void drawNames(std::ostream& out) const;
    /** Draws the lifelines, down to y = `height`, and their ends. */
    void drawLifelines(std::ostream& out, int height) const;
    /** Draws the arrow of a message, with its label. */
    void drawArrow(std::ostream& out, const Step& step) const;

    /** Returns the time without messages before this step, 0 if it is too short to be drawn. */
    std::chrono::microseconds pauseBefore(std::size_t step) const;

    /** Draws the arrow of an entry of the legend. */
    static void sDrawKey(std::ostream& out, const Key& key);
    /** Returns the CSS class for the colour of a step: "req", "pro", "ok" or "bad". */
    static const char* sClassOf(const Step& step);
    /** Returns the CSS class for the result of a call. */
    static const char* sClassOf(const Call& call);

    static const std::array<Key, 5> sLegend;
    /** The style sheet of all parts, light and dark. */
    static const char* const sStyle;

private:
    void drawLoop(std::ostream& out, const Step& step) const;
    void drawLabel(std::ostream& out, const Step& step, int x, const char* anchor, int room) const;

    const Call& m_call;
    std::vector<std::string> m_names;
    int m_boxWidth;
    int m_spacing;
    int m_width;
};
