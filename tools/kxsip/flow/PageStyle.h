#pragma once

/** The style sheet of a page of ladders, light and dark, wide and narrow. It has no characters that XML reserves. */
extern const char* const kPageStyle;
