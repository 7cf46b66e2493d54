#include "tools/kxsip/flow/TextLayout.h"

#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>

namespace {

constexpr std::size_t kNarrowest = 24;
constexpr std::size_t kWidest = 48;
constexpr std::size_t kLeast = 18; ///< Spacing that leaves room for labels within arrows, such as "INVITE (SDP)".
constexpr std::size_t kFrame = 6;  ///< What an arrow has besides its label: a head, a lifeline, blanks and strokes.
constexpr std::size_t kRoomy = 8;  ///< Spacing of keyed columns where there is room.
constexpr std::size_t kLabel = 16; ///< Least room for the labels after keyed columns.
constexpr std::size_t kFarLabel = 32;

/** Returns A to Z, AA, AB and so on. */
std::string letters(std::size_t number) {
    std::string result;
    for (++number; number > 0; number = (number - 1) / 26) {
        result.insert(result.begin(), static_cast<char>('A' + (number - 1) % 26));
    }
    return result;
}

} // namespace

std::string TextLayout::sLabelOf(const Step& step) {
    const std::string remark = step.remark();
    return step.facts.label() + (remark.empty() ? "" : " (" + remark + ")");
}

TextLayout::TextLayout(const Call& call, TimeText time, std::optional<std::size_t> width, std::string_view ellipsis)
    : m_width(width), m_gaps(call.columns.size() - 1) {
    measure(call, time);
    m_spacing = std::max({kNarrowest, m_nameWidth + 3, std::min(m_labelWidth + kFrame + 2, kWidest)});
    if (!fitNames(call, ellipsis)) {
        narrowGutter(call);
        if (!fitNames(call, ellipsis)) {
            key();
        }
    }
}

std::size_t TextLayout::roomAt(std::size_t place) const {
    return m_width ? std::max(*m_width - std::min(place, *m_width), kLabel) : std::string::npos;
}

void TextLayout::measure(const Call& call, TimeText time) {
    for (const Column& column : call.columns) {
        m_nameWidth = std::max(m_nameWidth, column.name.size());
    }
    for (const Step& step : call.steps) {
        m_labelWidth = std::max(m_labelWidth, Utf8::width(sLabelOf(step)));
        m_widestTime = std::max(m_widestTime, time.of(step, call).size());
    }
    m_timeWidth = std::max(m_timeWidth, m_widestTime);
    m_gutter = m_numberWidth + m_timeWidth + 4;
}

/** Removes blanks before and after number and time. */
void TextLayout::narrowGutter(const Call& call) {
    std::size_t greatest = 0;
    for (const Step& step : call.steps) {
        greatest = std::max(greatest, step.index);
    }
    m_numberWidth = std::min(m_numberWidth, std::to_string(greatest).size());
    m_timeWidth = m_widestTime;
    m_gutter = m_numberWidth + m_timeWidth + 3;
}

/** Returns the width up to the end of the last name. */
std::size_t TextLayout::widthOfNames(std::size_t spacing) const {
    return m_gutter + spacing * m_gaps + std::min(m_nameWidth, spacing - 2) / 2 + 1;
}

/** Finds the widest spacing that fits. Returns false if there is none. */
bool TextLayout::fitNames(const Call& call, std::string_view ellipsis) {
    std::size_t spacing = m_spacing;
    while (m_width && spacing >= kLeast && widthOfNames(spacing) > *m_width) {
        --spacing;
    }
    m_names = spacing < kLeast ? std::vector<std::string>() : Column::sShortNames(call.columns, spacing - 2, ellipsis);
    if (m_names.empty()) {
        return false;
    }
    m_spacing = spacing;
    return true;
}

void TextLayout::key() {
    m_isKeyed = true;
    for (std::size_t i = 0; i <= m_gaps; ++i) {
        m_names.push_back(letters(i));
    }
    const std::size_t least = m_names.back().size() + 2;
    const std::size_t taken = m_gutter + std::min(m_labelWidth, kFarLabel) + 3;
    const std::size_t room = m_gaps == 0 ? 0 : (*m_width - std::min(*m_width, taken)) / m_gaps;
    m_spacing = std::clamp(room, least, std::max(least, kRoomy));
}
