#pragma once

#include "tools/kxsip/Colour.h"
#include "tools/kxsip/flow/Call.h"

#include <ostream>

/** Whether the terminal's character set can draw lines: what LC_ALL, LC_CTYPE or LANG says. */
bool canDrawLines();

/** A call as a ladder of text, a message a line. */
class TextLadder {
public:
    /** With `lines` the ladder is drawn with box characters, else in ASCII. */
    TextLadder(std::ostream& out, Colour colour, bool lines);

    void draw(const Call& call);

private:
    struct Strokes {
        const char* life;
        const char* shaft;
        const char* left;
        const char* right;
        const char* loop;
    };

    void drawTitle(const Call& call);
    void drawNames(const Call& call);
    void drawStep(const Call& call, const Step& step);
    std::string arrow(const Step& step) const;
    std::string lifelines(std::size_t from, std::size_t to) const;
    std::size_t at(std::size_t column) const;

    static const Strokes sLines;
    static const Strokes sAscii;

    std::ostream& m_out;
    Colour m_colour;
    const Strokes& m_strokes;
    std::size_t m_spacing = 0; ///< Between two lifelines of the call that is drawn.
    bool m_first = true;
};
