#pragma once

#include "tools/kxsip/Colour.h"
#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/TextLayout.h"
#include "tools/kxsip/flow/TimeText.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

/** Whether the terminal's character set has box characters, by the first of LC_ALL, LC_CTYPE and LANG that is set. */
bool canDrawLines();

/** Returns the columns of the terminal, or else COLUMNS; nothing if standard output is no terminal. */
std::optional<std::size_t> terminalWidth();

/** Draws calls as ladders of text, one line for each message. A call of more than 100 columns is drawn as a list. */
class TextLadder {
public:
    struct Style {
        bool lines = false;               ///< Whether ladders are drawn with box characters, else in ASCII.
        std::optional<std::size_t> width; ///< As wide as their texts need if there is none.
        TimeText time = TimeText(TimeMode::Elapsed);
    };

    TextLadder(std::ostream& out, Colour colour, Style style);

    void draw(const Call& call);

private:
    struct Strokes {
        const char* life;
        const char* shaft;
        const char* left;
        const char* right;
        const char* loop;
        const char* ellipsis;
    };
    /** A piece of text that is not divided between lines. */
    struct Piece {
        Ink ink;
        std::string text;
    };

    void drawPieces(const std::vector<Piece>& pieces, std::size_t between, std::size_t indent = 0);
    void drawTitle(const Call& call);
    void drawLadder(const Call& call);
    void drawList(const Call& call);
    void drawKey(const Call& call);
    void drawNames(const Call& call);
    void drawGutter(const Call& call, const Step& step);
    void drawStep(const Call& call, const Step& step);
    void drawFlaws(const Call& call);
    std::string labelOf(const Step& step, std::size_t room) const;
    std::string arrow(const Step& step) const;
    std::string lifelines(std::size_t from, std::size_t to) const;
    std::string shortened(const std::string& text, std::size_t most) const;

    static const Strokes sLines;
    static const Strokes sAscii;

    std::ostream& m_out;
    Colour m_colour;
    Style m_style;
    const Strokes& m_strokes;
    std::optional<TextLayout> m_layout; ///< That of the current call.
    bool m_first = true;
};
