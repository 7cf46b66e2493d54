#pragma once

#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/TimeText.h"

#include <cstddef>
#include <ostream>
#include <vector>

/** Writes the ladders of all calls as one SVG picture. Each message has its text as tooltip. */
void drawSvg(std::ostream& out, const std::vector<Call>& calls, TimeText time);

/** Writes the ladders of all calls as one HTML page, which is also XML, with a list of the calls. Each message unfolds
    to its text. */
void drawHtml(std::ostream& out, const std::vector<Call>& calls, TimeText time);

/** Returns about how many bytes a picture of these calls has. */
std::size_t drawingSize(const std::vector<Call>& calls);
