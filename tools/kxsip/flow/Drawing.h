#pragma once

#include "tools/kxsip/flow/Call.h"

#include <string>
#include <vector>

/** The ladders of all calls as one SVG picture; each message has its text as tooltip. */
std::string svgDrawing(const std::vector<Call>& calls);

/** The ladders of all calls as one HTML page, with a list of the calls; each message unfolds to its text. */
std::string htmlDrawing(const std::vector<Call>& calls);
