#pragma once

#include "tools/kxsip/flow/Call.h"

#include <string>
#include <vector>

/** Returns the ladders of all calls as one SVG picture. Each message has its text as tooltip. */
std::string svgDrawing(const std::vector<Call>& calls);

/** Returns the ladders of all calls as one HTML page, with a list of the calls. Each message unfolds to its text. */
std::string htmlDrawing(const std::vector<Call>& calls);
