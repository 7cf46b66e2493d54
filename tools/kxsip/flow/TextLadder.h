#pragma once

#include "tools/kxsip/Colour.h"
#include "tools/kxsip/flow/Call.h"

#include <ostream>

/** Whether the terminal's character set has box characters, by the first of LC_ALL, LC_CTYPE and LANG that is set. */
bool canDrawLines();

/** Draws calls as ladders of text, one line for each message. */
class TextLadder {
public:
    /** With `lines` the ladders are drawn with box characters, else in ASCII. */
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
    std::size_t m_spacing = 0; ///< Between two lifelines of the current call.
    bool m_first = true;
};
