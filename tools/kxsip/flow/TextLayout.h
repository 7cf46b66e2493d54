#pragma once

#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/TimeText.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** Where a ladder of text has its lines, as it fits into a width. If there is room for it, the labels are within the
    arrows, and names that are too long are shortened. Otherwise the columns are named A, B, C, a key above the ladder
    tells what these are, and the labels follow after the last column. */
class TextLayout {
public:
    /** Without a width, everything gets the room that it needs. With one that is too small, the ladder is as wide as
        the least distance between the lifelines and the shortest labels need. */
    TextLayout(const Call& call, TimeText time, std::optional<std::size_t> width, std::string_view ellipsis);

    /** Returns the label of a message, "INVITE (SDP)". */
    static std::string sLabelOf(const Step& step);

    std::size_t at(std::size_t column) const { return m_gutter + m_spacing * column; }
    std::size_t spacing() const { return m_spacing; }
    std::size_t numberWidth() const { return m_numberWidth; }
    std::size_t timeWidth() const { return m_timeWidth; }
    const std::vector<std::string>& names() const { return m_names; }
    /** Whether the columns are named A, B, C, and the labels come last. */
    bool isKeyed() const { return m_isKeyed; }
    /** Returns the room for a label that begins at this place. */
    std::size_t roomAt(std::size_t place) const;

private:
    void measure(const Call& call, TimeText time);
    bool fitNames(const Call& call, std::string_view ellipsis);
    void key();
    void narrowGutter(const Call& call);
    std::size_t widthOfNames(std::size_t spacing) const;

    std::optional<std::size_t> m_width;
    std::size_t m_numberWidth = 6;
    std::size_t m_timeWidth = 10;
    std::size_t m_gutter = 20; ///< Before the first lifeline, for number and time.
    std::size_t m_spacing = 0; ///< Between two lifelines.
    std::size_t m_labelWidth = 0;
    std::size_t m_nameWidth = 0;
    std::size_t m_widestTime = 0;
    std::size_t m_gaps; ///< Number of columns without the first.
    std::vector<std::string> m_names;
    bool m_isKeyed = false;
};
